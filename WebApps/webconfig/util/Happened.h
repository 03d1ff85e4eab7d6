#pragma once

#include <initializer_list>
#include <string_view>

/// What happened to the device, told by the gateways that everything of a kind passes to whoever keeps a
/// record of it. Who asked for it is the recorder's business.
namespace webconfig::util {

/// A part of what happened: a name of ours, and a value from anywhere.
struct Detail {
    char const *name;
    std::string_view value;
};
using Details = std::initializer_list<Detail>;

using Recorder = void (*)(char const *event, char const *result, Details details);

/// Who is told from now on, on the thread of whoever tells; nobody where null, as at first.
void RecordWith(Recorder recorder);
/// Whether anybody is told: what is only found out for the record need not be else.
bool IsRecorded();

inline constexpr char ok[] = "ok";
inline constexpr char failed[] = "failed";
inline constexpr char refused[] = "refused";
inline char const *Outcome(bool done) {
    return done ? ok : failed;
}

void Happened(char const *event, char const *result, Details details = {});

}  // namespace webconfig::util

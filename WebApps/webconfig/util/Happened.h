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

enum class Outcome {
    Ok,
    Failed,   ///< the device could not
    Refused,  ///< it was not allowed to
};
inline Outcome OutcomeOf(bool done) {
    return done ? Outcome::Ok : Outcome::Failed;
}

using Recorder = void (*)(char const *event, Outcome outcome, Details details);

/// Who is told from now on, on the thread of whoever tells; nobody where null, as at first.
void RecordWith(Recorder recorder);
/// Whether anybody is told: what is found out only for the record need not be else.
bool IsRecorded();

void Happened(char const *event, Outcome outcome, Details details = {});

}  // namespace webconfig::util

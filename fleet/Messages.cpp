#include "fleet/Messages.h"

#include <algorithm>

#include "WebApps/webconfig/util/Utf8.h"

namespace fleet {

namespace {

namespace json = cppcms::json;

constexpr std::size_t maxId = 64;   // bytes
constexpr std::size_t maxWho = 64;  // bytes

/// A name for people that is one line of a log.
bool IsName(std::string const &text) {
    return !text.empty() && text.size() <= maxWho && webconfig::util::CleanText(text) == text &&
           text.find_first_of("\t\r\n") == std::string::npos;
}

}  // namespace

bool IsId(std::string_view id) {
    return !id.empty() && id.size() <= maxId && std::all_of(id.begin(), id.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '-' ||
               c == '_' || c == '.';
    });
}

std::string Topic(std::string const &device, char const *name) {
    return "fleet/" + device + '/' + name;
}

Change ReadChange(std::string_view message) {
    json::value read;
    char const *begin = message.data();
    if (message.size() > maxMessage)
        throw Malformed("Longer than " + std::to_string(maxMessage) + " bytes", "");
    if (!read.load(begin, message.data() + message.size(), true) || read.type() != json::is_object)
        throw Malformed("No JSON object", "");
    Change change;
    change.id = read.get("id", "");
    if (!IsId(change.id))
        throw Malformed("\"id\" is not 1 to 64 letters, digits, '-', '_' and '.'", "");
    change.who = read.get("who", "");
    if (!IsName(change.who))
        throw Malformed("\"who\" is not a name of at most 64 bytes", change.id);
    if (read.type("patch") != json::is_object)
        throw Malformed("\"patch\" is no object of keys and values", change.id);
    change.patch = std::move(read["patch"].object());
    try {
        if (!read.find("based_on").is_undefined())
            change.based_on = read.get<std::string>("based_on");
        if (!read.find("expires").is_undefined())
            change.expires = read.get<std::int64_t>("expires");
    } catch (std::bad_cast const &) {
        throw Malformed("\"based_on\" is no text, or \"expires\" no whole number", change.id);
    }
    return change;
}

}  // namespace fleet

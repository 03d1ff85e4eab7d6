#include "fleet/Messages.h"

#include <algorithm>

#include "WebApps/webconfig/util/Utf8.h"

namespace fleet {

namespace {

namespace json = cppcms::json;

constexpr std::string_view topicRoot = "fleet/";
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
    return std::string(topicRoot) + device + '/' + name;
}

Subject ReadTopic(std::string_view topic) {
    if (!topic.starts_with(topicRoot))
        return {};
    topic.remove_prefix(topicRoot.size());
    std::size_t const slash = topic.find('/');
    if (slash == std::string_view::npos || !IsId(topic.substr(0, slash)))
        return {};
    return {topic.substr(0, slash), topic.substr(slash + 1)};
}

json::value ReadObject(std::string_view message) {
    json::value read;
    char const *begin = message.data();
    if (message.size() > maxMessage)
        throw Malformed("Longer than " + std::to_string(maxMessage) + " bytes", "");
    if (!read.load(begin, message.data() + message.size(), true) || read.type() != json::is_object)
        throw Malformed("No JSON object", "");
    return read;
}

Change ReadChange(std::string_view message) {
    json::value read = ReadObject(message);
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
        if (!read.find("restart").is_undefined())
            change.restart = read.get<bool>("restart");
    } catch (std::bad_cast const &) {
        throw Malformed(
            "\"based_on\" is no text, \"expires\" no whole number, or \"restart\" neither true nor false",
            change.id);
    }
    return change;
}

std::string Written(Change const &change) {
    json::value written;
    written["id"] = change.id;
    written["who"] = change.who;
    written["patch"] = change.patch;
    if (!change.based_on.empty())
        written["based_on"] = change.based_on;
    if (change.expires != 0)
        written["expires"] = change.expires;
    if (change.restart)
        written["restart"] = true;
    return written.save();
}

}  // namespace fleet

#include "fleet/console/Methods.h"

#include <sstream>
#include <string>

namespace fleet::console {

namespace {

namespace json = cppcms::json;

constexpr char openRpcVersion[] = "1.3.2";

#define FILTER                                                                                   \
    "search:string? online:boolean? firmware:string? model:string? tag:string? differs:object? " \
    "ids:array? "
#define PAGE "offset:integer? limit:integer?"
#define ROLLOUT_MEMBERS                                                                               \
    "rollout title who time state reason asked members counts why patch restart canaries wave limit " \
    "patience settle wave_now waves selection takes_back log"

// In the order of their description.
constexpr Method methods[] = {
    {"status", "How the console does", "", "broker since devices online messages rollouts", &Rpc::Status},
    {"devices", "Devices, filtered, sorted, and paged", FILTER "sort:string? descending:boolean? " PAGE,
     "total matching online devices firmwares models tags", &Rpc::Devices},
    {"device", "One device, with its settings", "id:string",
     "id name model firmware serial online seen restart trial tags health uptime revision note settings",
     &Rpc::Device},
    {"catalogue", "The table of settings, by pages", "", "pages", &Rpc::Catalogue},
    {"health", "The last samples of a device, oldest first", "id:string", "samples", &Rpc::Health},
    {"changes", "Changes, newest first", "id:string? rollout:integer? change:string? " PAGE, "total changes",
     &Rpc::Changes},
    {"change", "Sends a device a change of its settings",
     "id:string patch:object based_on:string? restart:boolean?", "change", &Rpc::Change},
    {"tag", "Gives devices tags, and takes tags away", "ids:array add:array? remove:array?", "devices",
     &Rpc::Tag},
    {"note", "Sets a device's note", "id:string note:string", "boolean", &Rpc::Note},
    {"forget", "Forgets a device that is offline", "id:string", "boolean", &Rpc::Forget},
    {"rollouts", "Rollouts, newest first", PAGE, "total rollouts", &Rpc::Rollouts},
    {"rollout", "One rollout", "rollout:integer", ROLLOUT_MEMBERS, &Rpc::Rollout},
    {"members", "The members of a rollout", "rollout:integer state:string? " PAGE, "total members",
     &Rpc::Members},
    {"roll_out", "Begins a rollout: one change for the devices of a filter, in waves",
     "title:string why:string? patch:object select:object restart:boolean? canaries:integer? wave:integer? "
     "limit:integer? patience:integer? settle:integer?",
     "rollout members", &Rpc::RollOut},
    {"pause", "Sends nothing more for now", "rollout:integer", ROLLOUT_MEMBERS, &Rpc::Pause},
    {"go_on", "Goes on with a rollout that is paused, or has stopped", "rollout:integer", ROLLOUT_MEMBERS,
     &Rpc::GoOn},
    {"take_back", "Gives the members what they had before, by another rollout", "rollout:integer",
     ROLLOUT_MEMBERS, &Rpc::TakeBack},
    {"end", "Sends nothing more for good", "rollout:integer", ROLLOUT_MEMBERS, &Rpc::End},
    {"rpc.discover", "This description", "", "openrpc info methods", &Rpc::Discover},
};

json::value TypeOf(std::string const &type) {
    json::value schema;
    schema["type"] = type;
    return schema;
}

/// The one parameter: an object.
json::value Taken(std::string const &members) {
    json::value schema = TypeOf("object");
    schema["required"] = json::array();
    schema["properties"] = json::object();
    std::istringstream in(members);
    for (std::string member; in >> member;) {
        bool const optional = member.ends_with('?');
        std::size_t const colon = member.find(':');
        std::string const name = member.substr(0, colon);
        std::string const type = member.substr(colon + 1, member.size() - colon - 1 - (optional ? 1 : 0));
        schema["properties"].object()[name] = TypeOf(type);
        if (!optional)
            schema["required"].array().emplace_back(name);
    }
    json::value parameter;
    parameter["name"] = "asked";
    parameter["required"] = true;
    parameter["schema"] = schema;
    return parameter;
}

json::value Given(std::string const &members) {
    if (members == "boolean")
        return TypeOf(members);
    json::value schema = TypeOf("object");
    schema["required"] = json::array();
    std::istringstream in(members);
    for (std::string member; in >> member;)
        schema["required"].array().emplace_back(member);
    return schema;
}

}  // namespace

std::span<Method const> Methods() {
    return methods;
}

json::value MethodsDocument() {
    json::value document;
    document["openrpc"] = openRpcVersion;
    document["info"]["title"] = "Fleet console";
    document["info"]["version"] = WEBCONFIG_VERSION;
    document["info"]["description"] = "JSON-RPC 1.0 over HTTP POST, one object as the only parameter";
    document["methods"] = json::array();
    for (auto const &method : methods) {
        json::value described;
        described["name"] = method.name;
        described["summary"] = method.summary;
        described["paramStructure"] = "by-position";
        described["params"] = json::array{Taken(method.takes)};
        described["result"]["name"] = "result";
        described["result"]["schema"] = Given(method.result);
        document["methods"].array().push_back(described);
    }
    return document;
}

}  // namespace fleet::console

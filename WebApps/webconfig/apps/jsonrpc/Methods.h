#pragma once

#include <cppcms/json.h>

#include <span>
#include <variant>

#include "WebApps/webconfig/apps/JsonRpc.h"

/// The table of status methods: they are bound by it, and described by it to whoever asks.
namespace webconfig::apps {

struct Parameter {
    char const *name;
    char const *summary;
    char const *schema;  ///< JSON schema
};

/// What a configuration has to ask for.
enum class Feature { Always, Metrics, Trial, Machines };

/// How a method is served: by a poll that others share, by a call with parameters, or by the application
/// itself, at once.
using Handler = std::variant<SharedPoll::Gather, CallQueue::Serve, void (JsonRpc::*)(),
                             void (JsonRpc::*)(std::string const &)>;

struct Method {
    char const *name;
    char const *summary;
    char const *result;  ///< the members of an object, in words; or a JSON schema
    Handler handler;
    std::span<Parameter const> parameters = {};
    Feature feature = Feature::Always;
};

std::span<Method const> Methods();

/// Whether the configuration asks for a feature; \a machines is what it says of theirs.
bool IsOffered(Feature feature, bool machines);

/// The OpenRPC description of what is offered.
cppcms::json::value MethodsDocument(bool machines);

}  // namespace webconfig::apps

#pragma once

#include <span>

#include "fleet/console/Rpc.h"

/// The table of calls: they are bound by it, and described by it to whoever asks.
namespace fleet::console {

struct Method {
    char const *name;
    char const *summary;
    char const *takes;   ///< the members of its object, "NAME:TYPE", with "?" behind what may be absent
    char const *result;  ///< the members of an object, in words; or a type of JSON
    Rpc::Answer (Rpc::*serve)(Rpc::Asked const &asked);
};

std::span<Method const> Methods();

/// Their OpenRPC description.
cppcms::json::value MethodsDocument();

}  // namespace fleet::console

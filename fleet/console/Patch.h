#pragma once

#include <cppcms/json.h>

#include <string>

namespace fleet::console {

/// \a patch, which is to be sent. Throws Refused where something is wrong with it, as far as that can be
/// known without the device.
cppcms::json::object ReadPatch(cppcms::json::object patch);

/// A patch, JSON, as it is shown: of secrets only that they are set.
cppcms::json::value ShownPatch(std::string const &patch);

}  // namespace fleet::console

#pragma once

#include <cppcms/json.h>

#include <string>

namespace webconfig::util {

/// The value of the environment variable \a name; empty where it is not set.
std::string GetEnv(std::string const &name);

/// The value of the environment variable \a name or, where that is unset or empty, the text at the dotted
/// \a path in \a settings; empty where there is no text either.
std::string EnvOrSettings(std::string const &name, std::string const &path,
                          cppcms::json::value const &settings);

}  // namespace webconfig::util

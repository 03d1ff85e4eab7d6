#include "WebApps/webconfig/util/Settings.h"

#include <cstdlib>

namespace webconfig::util {

std::string GetEnv(std::string const &name) {
    char const *const value = std::getenv(name.c_str());
    return value ? value : "";
}

std::string EnvOrSettings(std::string const &name, std::string const &path,
                          cppcms::json::value const &settings) {
    std::string value = GetEnv(name);
    return value.empty() ? settings.get(path, "") : value;
}

}  // namespace webconfig::util

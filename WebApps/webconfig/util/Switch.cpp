#include "WebApps/webconfig/util/Switch.h"

#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::util {

bool IsOn(std::string const &key) {
    return Prm::GetString(key) == "yes";
}

std::string SwitchText(bool on) {
    return on ? "yes" : "no";
}

}  // namespace webconfig::util

#include "WebApps/webconfig/security/FrameworkSettings.h"

#include <string>
#include <vector>

#include "WebApps/webconfig/security/Headers.h"
#include "WebApps/webconfig/security/Policy.h"

namespace webconfig::security {

void SetUpFramework(cppcms::json::value &settings, Policy const &policy, std::string const &calls) {
    if (policy.same_origin) {
        settings.set("http.same_origin", true);
        settings.set("http.same_origin_paths", std::vector<std::string>{calls});
    }
    if (policy.hosts)
        settings.set("http.hosts", *policy.hosts);
    if (policy.headers) {
        cppcms::json::object all = settings.get("http.headers", cppcms::json::object());
        for (auto const &[name, value] : headers)
            all.emplace(name, value);  // what the configuration has itself stays
        settings.set("http.headers", all);
    }
}

}  // namespace webconfig::security

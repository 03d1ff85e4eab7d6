#include "WebApps/webconfig/settings/Description.h"

#include "WebApps/webconfig/settings/Languages.h"

namespace webconfig::settings {

namespace {

// By Kind and Effect.
constexpr char const *kinds[] = {"text", "name",    "choice",  "switch", "number",
                                 "port", "address", "netmask", "secret", "file"};
constexpr char const *effects[] = {"none",         "restart",      "port_forwarding", "remote_access",
                                   "time_servers", "site_server",  "access_point",    "wifi_client",
                                   "web_password", "root_password"};

}  // namespace

cppcms::json::value Described(Setting const &setting) {
    Limits const &limits = setting.limits;
    cppcms::json::value described;
    described["key"] = std::string(setting.key);
    described["label"] = setting.label;
    described["page"] = setting.page;
    described["kind"] = kinds[static_cast<int>(setting.kind)];
    described["effect"] = effects[static_cast<int>(setting.effect)];
    described["reach"] = setting.reach;
    described["least"] = limits.least;
    if (limits.most > 0)
        described["most"] = limits.most;
    cppcms::json::array choices;
    for (auto const &choice : ChoicesOf(setting)) {
        cppcms::json::value one;
        one["label"] = choice.label;
        one["value"] = choice.value;
        choices.push_back(one);
    }
    if (!choices.empty())
        described["choices"] = choices;
    if (!limits.parts.empty())
        described["parts"] = std::string(limits.parts);
    return described;
}

}  // namespace webconfig::settings

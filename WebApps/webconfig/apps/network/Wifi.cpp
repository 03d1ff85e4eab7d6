#include "WebApps/webconfig/apps/network/Wifi.h"

#include <cstring>

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps::wifi {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Network";

}  // namespace

std::optional<std::string> Key(Credentials const &stored, std::string const &ssid,
                               std::string const &passPhrase) {
    std::string key;
    if (!passPhrase.empty())
        key = util::getPsk(ssid, passPhrase);
    else if (ssid == stored.ssid && stored.key.size() >= settings::wifiKeyLength)
        key = stored.key;
    return key.empty() ? std::nullopt : std::optional(key);
}

void Refuse(cppcms::widgets::base_widget &widget) {
    forms::SetInlineAttribute(widget, forms::redBorder);
    widget.valid(false);
}

bool IsCountryLocked() {
    return util::getCountryChannels().size() == 1;
}

data::Message Apply(std::string const &function, std::string const &what) {
    int const status = util::RunCommand(settings::ApplyWifi(function));
    if (status == 0)
        return data::Message::OK("Configuration saved successfully");
    int const exitCode = status >> 8 & 0xFF;
    WEBCONFIG_LOG(error, logTag) << "Failed to configure " << what << ". Error '" << std::strerror(exitCode)
                                 << '\'';
    return data::Message::Error(util::Translate("Failed to configure {1}. Error '{2}'", util::Translate(what),
                                                std::strerror(exitCode)));
}

}  // namespace webconfig::apps::wifi

#include "WebApps/webconfig/data/AccessPoint.h"

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/network/Wifi.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Network";

constexpr char const *enabledKey = settings::Key("net/wifi/ap/enabled");
constexpr char const *channelKey = settings::Key("net/wifi/ap/channel");
constexpr char const *ssidKey = settings::Key("net/wifi/ap/essid");
constexpr char const *pskKey = settings::Key("net/wifi/ap/wpa_psk");

constexpr char channelField[] = "apChannel";

void LoadFromStore(data::AccessPoint &content) {
    content.enabled = util::IsOn(enabledKey);
    content.channel = util::Prm::GetString(channelKey);
    content.ssid = util::Prm::GetString(ssidKey);
    content.country = util::WifiCountry();
    content.key = util::Prm::GetString(pskKey);
}

void LoadModule(data::AccessPoint &content) {
    content.country_locked = wifi::IsCountryLocked();
    content.laird = settings::IsLairdModule();
    content.channel_read_only = content.laird && util::IsOn(wifi::clientEnabledKey);
    content.blocked = content.channel_read_only && settings::IsChannelBlocked(content.channel);
}

void ShowStored(data::AccessPoint &content) {
    content.form.enabled.value(content.enabled);
    content.form.ssid.value(content.ssid);
    content.form.country.Show(content.country);
    content.form.security.selected_id("wpa");
    content.chosen_channel = content.channel;
}

void Save(data::AccessPoint &content, std::string const &channel) {
    forms::AccessPoint &form = content.form;
    bool const switchesOn = form.enabled.value() && !content.enabled;
    ParameterWriter writer;
    if (!form.enabled.value()) {
        writer.SetSwitchIfChanged(enabledKey, false);
    } else if (content.blocked) {
        content.message = data::Message::Error("Failed. Cannot enable Laird AP when WLAN is on 5GHz");
        WEBCONFIG_LOG(error, logTag) << content.message.GetText();
        ShowStored(content);
        return;
    } else {
        std::string const ssid = form.ssid.value();
        std::string const country = form.country.Posted();
        auto const key = wifi::Key({content.ssid, content.key}, ssid, form.passPhrase.value());
        if (!key)
            wifi::Refuse(form.passPhrase);
        if (!key || !settings::IsChannelOffered(channel, content.channel, country)) {
            content.message = data::Message::ValidationError();
            return;
        }
        writer.SetIfChanged(ssidKey, ssid)
            .SetIfChanged(pskKey, *key)
            .SetSwitchIfChanged(enabledKey, true)
            .SetIfChanged(channelKey, channel)
            .SetIfChanged(wifi::countryKey, country);
    }

    LoadFromStore(content);
    ShowStored(content);
    content.message = writer.Result();
    if (!writer.Ok())
        return;
    form.passPhrase.value("");
    content.message = wifi::Apply("wifi_ap", util::Translatable("access point"));
    if (content.message.GetResultClass() == data::Message::ResultClass::Error && switchesOn)
        form.enabled.value(false);  // the store keeps "yes"
}

}  // namespace

void Network::AccessPoint() {
    util::Prm::FlushReadCache();  // the WLAN page and scripts change what this page reads
    data::AccessPoint content;
    Prepare(content);
    content.title = util::Translate("Config Access Point");
    LoadFromStore(content);
    LoadModule(content);

    ShowStored(content);
    if (HttpPost()) {
        std::string const channel = HttpPost(channelField);
        if (!channel.empty())
            content.chosen_channel = channel;
        if (ValidateForm(content.form))
            Save(content, channel);
        else
            content.message = data::Message::ValidationError();
    }
    content.form.country.ShowDomain();
    render("AccessPoint", content);
}

}  // namespace webconfig::apps

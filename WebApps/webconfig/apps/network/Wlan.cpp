#include "WebApps/webconfig/data/Wlan.h"

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/network/Wifi.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char const *ssidKey = settings::Key("net/wifi/client/essid");
constexpr char const *securityKey = settings::Key("net/wifi/client/security");
constexpr char const *pskKey = settings::Key("net/wifi/client/wpa_psk");
constexpr char const *identityKey = settings::Key("net/wifi/client/eap/identity");
constexpr char const *passwordKey = settings::Key("net/wifi/client/eap/password");
constexpr char const *mobileKey = settings::Key("net/wifi/client/mobile_qx");

constexpr char noSecurity[] = "none";
constexpr char personalSecurity[] = "wpa";

void LoadFromStore(data::Wlan &content) {
    content.enabled = util::IsOn(wifi::clientEnabledKey);
    content.ssid = util::Prm::GetString(ssidKey);
    content.country = util::WifiCountry();
    content.security = util::Prm::GetString(securityKey);
    if (content.security.empty())
        content.security = noSecurity;
    content.key = util::Prm::GetString(pskKey);
    content.identity = util::Prm::GetString(identityKey);
    content.password_hash = util::Prm::GetString(passwordKey);
    content.mobile = util::IsOn(mobileKey);
}

void ShowStored(data::Wlan &content) {
    forms::Wlan &form = content.form;
    form.enabled.value(content.enabled);
    form.ssid.value(content.ssid);
    form.country.Show(content.country);
    forms::SelectByValue(form.security, content.security);
    form.identity.value(content.identity);
    form.mobile.value(content.mobile);
}

/// The writes of the kinds of security. Each returns false, with nothing written, where something that it
/// needs is missing: an input, which is marked then, or a part of the system, which sets the message.
bool WritePersonal(data::Wlan &content, ParameterWriter &writer) {
    forms::Wlan &form = content.form;
    // A key that another kind of security has left in the store may be that of the network before.
    std::string const storedKey = content.security == personalSecurity ? content.key : "";
    auto const key = wifi::Key({content.ssid, storedKey}, form.ssid.value(), form.passPhrase.value());
    if (!key) {
        wifi::Refuse(form.passPhrase);
        return false;
    }
    writer.SetIfChanged(ssidKey, form.ssid.value()).SetIfChanged(pskKey, *key);
    return true;
}

bool WriteEnterprise(data::Wlan &content, ParameterWriter &writer) {
    forms::Wlan &form = content.form;
    std::string const password = form.passPhrase.value();
    std::string const hash = password.empty() ? std::string() : util::getNtPasswordHash(password);
    if (form.identity.value().empty())
        wifi::Refuse(form.identity);
    if (password.empty() && content.password_hash.empty())
        wifi::Refuse(form.passPhrase);
    if (!form.identity.valid() || !form.passPhrase.valid())
        return false;
    if (!password.empty() && hash.empty()) {
        content.message = data::Message::SaveError();
        return false;
    }
    if (!hash.empty())
        writer.Set(passwordKey, hash);
    writer.SetIfChanged(identityKey, form.identity.value());
    return true;
}

bool WriteSecurity(data::Wlan &content, ParameterWriter &writer) {
    std::string const security = content.form.security.selected_id();
    if (security == personalSecurity)
        return WritePersonal(content, writer);
    if (security == "wpa_eap")
        return WriteEnterprise(content, writer);
    writer.SetIfChanged(pskKey, "");
    return true;
}

void Save(data::Wlan &content) {
    forms::Wlan &form = content.form;
    ParameterWriter writer;
    if (!form.enabled.value()) {
        writer.SetSwitchIfChanged(wifi::clientEnabledKey, false);
    } else if (!WriteSecurity(content, writer)) {
        if (content.message.IsEmpty())
            content.message = data::Message::ValidationError();
        return;
    } else {
        if (form.security.selected_id() != content.security)
            writer.Set(securityKey, form.security.selected_id());
        writer.SetSwitchIfChanged(wifi::clientEnabledKey, true).SetIfChanged(ssidKey, form.ssid.value());
        if (form.country.Posted() != content.country)
            writer.Set(wifi::countryKey, form.country.Posted());
        writer.SetSwitchIfChanged(mobileKey, form.mobile.value());
    }

    LoadFromStore(content);
    ShowStored(content);
    content.message = writer.Result();
    if (!writer.Ok())
        return;
    form.passPhrase.value("");
    content.message = wifi::Apply("wifi_client", util::Translatable("WLAN client"));
    util::RunCommand(settings::applyWifiClient);  // whatever the module's script said
}

}  // namespace

void Network::Wlan() {
    data::Wlan content;
    Prepare(content);
    content.title = util::Translate("Config WLAN");
    content.country_locked = wifi::IsCountryLocked();
    LoadFromStore(content);

    if (!HttpPost())
        ShowStored(content);
    else if (!ValidateForm(content.form))
        content.message = data::Message::ValidationError();
    else
        Save(content);
    content.form.country.ShowDomain();
    render("Wlan", content);
}

}  // namespace webconfig::apps

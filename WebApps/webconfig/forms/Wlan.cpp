#include "WebApps/webconfig/forms/Wlan.h"

#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

Wlan::Wlan() {
    enabled.name("wlanEnabled");
    enabled.id("wlan_enabled");
    enabled.message("WLAN Enabled");
    add(enabled);

    ssid.name("wlanEssId");
    ssid.id("wlan_ess_id");
    ssid.message("SSID");
    add(ssid);

    add(country);

    security.name("wlanSecurity");
    security.id("wlan_security");
    security.message("Security Type");
    security.add("None", "none");
    security.add("WPA/WPA2 - Personal", "wpa");
    security.add("WPA/WPA2 - Enterprise", "wpa_eap");
    security.error_message("This field is required");
    security.attributes_string("onchange=\"wlanSecurityChange()\"");
    add(security);

    identity.name("wlanIdentity");
    identity.id("wlan_identity");
    identity.message("Username");
    identity.error_message("This field is required");
    add(identity);

    passPhrase.name("wlanPassPhrase");
    passPhrase.id("wlan_pass_phrase");
    passPhrase.message("Password");
    passPhrase.error_message("Invalid length, minimum 8 if security type is not 'None'");
    add(passPhrase);

    mobile.name("wlanMobileQx");
    mobile.id("wlan_mobile_qx");
    mobile.message("Allow Mobile QX connection");
    add(mobile);

    save.name("wlanSubmit");
    save.id("wlan_submit");
    save.value("Save");
    add(save);
}

bool Wlan::validate() {
    bool const valid = Base::validate();
    if (!enabled.value())
        return valid;
    bool const named = util::validation::IsSsid(ssid);
    bool const offered = country.IsOffered();
    security.valid(!security.selected_id().empty());
    return valid && named && offered && security.valid();
}

}  // namespace webconfig::forms

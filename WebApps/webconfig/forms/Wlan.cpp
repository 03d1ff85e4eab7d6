#include "WebApps/webconfig/forms/Wlan.h"

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

Wlan::Wlan() {
    SetUp(enabled, "wlanEnabled", "wlan_enabled", "WLAN Enabled");
    add(enabled);

    SetUp(ssid, "wlanEssId", "wlan_ess_id", "SSID");
    add(ssid);

    add(country);

    SetUp(security, "wlanSecurity", "wlan_security", "Security Type");
    for (auto const &choice : settings::Row("net/wifi/client/security").limits.choices)
        security.add(util::Translate(choice.label), choice.value);
    security.error_message("This field is required");
    SetInlineAttribute(security, onSecurityChange);
    add(security);

    SetUp(identity, "wlanIdentity", "wlan_identity", "Username");
    identity.error_message("This field is required");
    add(identity);

    SetUp(passPhrase, "wlanPassPhrase", "wlan_pass_phrase", "Password");
    passPhrase.error_message("Invalid length, minimum 8 if security type is not 'None'");
    add(passPhrase);

    SetUp(mobile, "wlanMobileQx", "wlan_mobile_qx", "Allow Mobile QX connection");
    add(mobile);

    SetUpSubmit(save, "wlanSubmit", "wlan_submit", "Save");
    add(save);
}

bool Wlan::validate() {
    bool const valid = Base::validate();
    if (!enabled.value())
        return valid;
    bool const named = util::validation::IsName(ssid, settings::Row("net/wifi/client/essid"));
    bool const offered = country.IsOffered();
    security.valid(!security.selected_id().empty());
    return valid && named && offered && security.valid();
}

}  // namespace webconfig::forms

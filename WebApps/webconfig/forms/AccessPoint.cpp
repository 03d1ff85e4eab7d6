#include "WebApps/webconfig/forms/AccessPoint.h"

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

AccessPoint::AccessPoint() {
    SetUp(enabled, "apEnabled", "ap_enabled", "Access Point Enabled");
    add(enabled);

    SetInlineAttribute(country.code, onCountryChange);
    add(country);

    SetUp(security, "apSecurity", "ap_security", "Security Type");
    security.add(util::Translate("WPA/WPA2 - Personal"), "wpa");
    security.selected_id("wpa");
    add(security);

    SetUp(ssid, "apEssId", "ap_ess_id", "SSID");
    add(ssid);

    SetUp(passPhrase, "apPassPhrase", "ap_pass_phrase", "Password (length: 8~63)");
    passPhrase.error_message("Invalid length");
    add(passPhrase);

    SetUpSubmit(save, "apSubmit", "ap_submit", "Save");
    add(save);
}

bool AccessPoint::validate() {
    bool const valid = Base::validate();
    if (!enabled.value())
        return valid;
    bool const named = util::validation::IsName(ssid, settings::Row("net/wifi/ap/essid"));
    bool const offered = country.IsOffered();
    return valid && named && offered;
}

}  // namespace webconfig::forms

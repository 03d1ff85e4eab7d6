#include "WebApps/webconfig/forms/AccessPoint.h"

#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

AccessPoint::AccessPoint() {
    enabled.name("apEnabled");
    enabled.id("ap_enabled");
    enabled.message("Access Point Enabled");
    add(enabled);

    country.code.attributes_string("onchange=\"apCountryCodeChange(this)\"");
    add(country);

    security.name("apSecurity");
    security.id("ap_security");
    security.message("Security Type");
    security.add("WPA/WPA2 - Personal", "wpa");
    security.selected_id("wpa");
    add(security);

    ssid.name("apEssId");
    ssid.id("ap_ess_id");
    ssid.message("SSID");
    add(ssid);

    passPhrase.name("apPassPhrase");
    passPhrase.id("ap_pass_phrase");
    passPhrase.message("Password (length: 8~63)");
    passPhrase.error_message("Invalid length");
    add(passPhrase);

    save.name("apSubmit");
    save.id("ap_submit");
    save.value("Save");
    add(save);
}

bool AccessPoint::validate() {
    bool const valid = Base::validate();
    if (!enabled.value())
        return valid;
    bool const named = util::validation::IsSsid(ssid);
    bool const offered = country.IsOffered();
    return valid && named && offered;
}

}  // namespace webconfig::forms

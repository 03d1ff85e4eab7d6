#include "WebApps/webconfig/forms/WifiCountry.h"

#include "WebApps/webconfig/forms/InlineAttribute.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/CountryChannels.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Wifi.h"

namespace webconfig::forms {

WifiCountry::WifiCountry(std::string const &prefix) {
    SetUp(code, prefix + "CountryCode", prefix + "_country_code", "Country Code");
    code.error_message("This country is not available");
    for (auto const &[country, channels] : util::getCountryChannels())
        code.add(country, country);
    add(code);

    SetUp(copy, prefix + "CountryCode", prefix + "_country_code_copy");
    add(copy);

    SetUp(regulatoryDomain, prefix + "RegulatoryDomain", prefix + "_regulatory_domain", "Regulatory Domain");
    regulatoryDomain.readonly(true);
    SetInlineAttribute(regulatoryDomain, greyGround);
    add(regulatoryDomain);
}

void WifiCountry::load(cppcms::http::context &context) {
    cppcms::form::load(context);
    SelectByValue(code, Posted());  // a select takes none of two values
}

void WifiCountry::Show(std::string const &country) {
    SelectByValue(code, country);
    copy.value(country);
    ShowDomain();
}

void WifiCountry::ShowDomain() {
    regulatoryDomain.value(util::getRegulatoryFriendlyName(util::Prm::GetString("net/wifi/region_code")));
}

std::string WifiCountry::Posted() {
    return copy.value();  // the first of the name, and the select stands before the copy
}

bool WifiCountry::IsOffered() {
    code.valid(settings::IsCountryOffered(Posted()));
    return code.valid();
}

}  // namespace webconfig::forms

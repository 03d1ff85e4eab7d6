#include "WebApps/webconfig/data/DNSServer.h"

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps {

namespace {

constexpr char const *preferredKey = settings::Key("net/lan_dns1");
constexpr char const *alternateKey = settings::Key("net/lan_dns2");
constexpr char const *suffixKey = settings::Key("net/lan_dns_suffix");
constexpr char const *appendKey = settings::Key("net/lan_dns_is_append");

data::Message Store(forms::DNSServer &form) {
    ParameterWriter writer;
    writer.Set(preferredKey, form.dnsServer0.value())
        .Set(alternateKey, form.dnsServer1.value())
        .Set(suffixKey, form.dnsSuffix.value())
        .SetSwitch(appendKey, form.isAppend.value());
    return writer.Result(data::Message::OK("DNS server settings updated, reboot to take effect"));
}

void LoadFromStore(forms::DNSServer &form) {
    form.dnsServer0.value(util::Prm::GetString(preferredKey));
    form.dnsServer1.value(util::Prm::GetString(alternateKey));
    form.dnsSuffix.value(util::Prm::GetString(suffixKey));
    form.isAppend.value(util::IsOn(appendKey));
}

}  // namespace

void Network::DNSServer() {
    data::DNSServer content;
    Prepare(content);
    content.title = util::Translate("Custom DNS Servers");

    if (!HttpPost())
        LoadFromStore(content.form);
    else if (ValidateForm(content.form))
        content.message = Store(content.form);
    else
        content.message = data::Message::ValidationError();
    render("DNSServer", content);
}

}  // namespace webconfig::apps

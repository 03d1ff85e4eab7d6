#include "WebApps/webconfig/data/Ntpd.h"

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char const *enabledKey = settings::Key("system/ntpd/enabled");

constexpr settings::Pattern serverKey("system/ntpd/servers/*");

std::string ServerKey(std::size_t number) {
    return serverKey.With(std::to_string(number));
}

data::Message Store(forms::Ntpd &form) {
    ParameterWriter writer;
    writer.SetSwitch(enabledKey, form.ntpdEnabled.value());
    for (std::size_t i = 0; i < form.servers.size(); ++i)
        writer.Set(ServerKey(i), form.servers[i].value());
    return writer.Result();
}

void LoadFromStore(forms::Ntpd &form) {
    form.ntpdEnabled.value(util::IsOn(enabledKey));
    for (std::size_t i = 0; i < form.servers.size(); ++i)
        form.servers[i].value(util::Prm::GetString(ServerKey(i)));
}

}  // namespace

void Network::Ntpd() {
    data::Ntpd content;
    Prepare(content);
    content.title = util::Translate("NTP Servers");

    std::string const action = HttpPost() ? HttpPost("submit") : "";
    if (action == "Jump system time") {
        util::RunCommand("/usr/bin/chronyc online");
    } else if (action == "Save" && !ValidateForm(content.form)) {
        content.message = data::Message::ValidationError();
    } else if (action == "Save") {
        // Started again whatever became of the writes: the script itself heeds the switch.
        util::RunCommand(settings::stopTimeServer);
        content.message = Store(content.form);
        util::RunCommand(settings::startTimeServer);
    }
    LoadFromStore(content.form);
    render("Ntpd", content);
}

}  // namespace webconfig::apps

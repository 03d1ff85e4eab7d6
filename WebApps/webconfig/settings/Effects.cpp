#include "WebApps/webconfig/settings/Effects.h"

#include "WebApps/webconfig/util/PasswordHash.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::settings {

namespace {

bool Run(util::ConstantText command) {
    return util::RunCommand(command) == 0;
}

bool RunEffect(Effect effect) {
    switch (effect) {
        case Effect::None:
            return true;
        case Effect::Restart:
            util::MarkRebootRequired();
            return true;
        case Effect::PortForwarding:
            return Run(applyPortForwarding);
        case Effect::RemoteAccess:
            return Run(applyRemoteAccess);
        case Effect::TimeServers:
            Run(stopTimeServer);  // which may not run
            return Run(startTimeServer);
        case Effect::SiteServer:
            return Run(util::IsOn(Key("tern/enabled")) ? startSiteLink : stopSiteLink);
        case Effect::AccessPoint:
            return util::RunCommand(ApplyWifi("wifi_ap")) == 0;
        case Effect::WifiClient: {
            bool const done = util::RunCommand(ApplyWifi("wifi_client")) == 0;
            return Run(applyWifiClient) && done;
        }
        case Effect::WebPassword:
            return Run(applyWebPassword);
        case Effect::RootPassword:
            return util::SetRootPasswordHash(util::Prm::GetString(Key("system/digest/root")));
    }
    return false;
}

}  // namespace

util::Command ApplyWifi(std::string const &part) {
    return util::Command("/etc/init.d/network_funcs.sh").Arg(part);
}

bool PutIntoEffect(std::set<Effect> const &effects) {
    bool done = true;
    for (Effect const effect : effects)
        done = RunEffect(effect) && done;
    return done;
}

}  // namespace webconfig::settings

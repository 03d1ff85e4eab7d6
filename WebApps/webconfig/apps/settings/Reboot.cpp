#include "WebApps/webconfig/data/Reboot.h"

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char lanAddressKey[] = "net/lan_ipaddr";
constexpr char finishedUpgrade[] = "finishedUpgrade";

}  // namespace

void Settings::Reboot() {
    data::Reboot content;
    Prepare(content);
    content.title = util::Translate("Reboot");
    if (HttpGet("type") == finishedUpgrade)
        content.message = data::Message::OK("Firmware upgraded successfully, reboot to run new firmware");

    if (HttpPost()) {
        if (ValidateForm(content.form)) {
            _RebootAndWait(content);
            return;
        }
        content.message = data::Message::ValidationError();
    }
    render("Reboot", content);
}

void Settings::_RebootAndWait(data::Reboot &content) {
    content.message = data::Message(data::Message::ResultClass::Custom, "Please wait..rebooting", false);
    content.lan_address = util::Prm::GetString(lanAddressKey);
    content.current_address = util::GetCurrentIPAddress();
    content.reboot_required = false;
    render("WaitReboot", content);
    util::ForkReboot();
}

}  // namespace webconfig::apps

#include "WebApps/webconfig/data/AssemblySerialN.h"

#include "WebApps/webconfig/apps/Service.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char mediaRoot[] = "/service_imgs";
constexpr char styleSheet[] = "/service_plugin_imgs/application/head/dvx_brq3.css";
constexpr char script[] = "/service_plugin_imgs/application/head/brq3.js";

}  // namespace

void Service::SerialNumberHandler() {
    data::AssemblySerialN content;
    Prepare(content);
    content.title = util::Translate("Assembly Serial Number");
    content.media_root = mediaRoot;
    content.style_sheets = {styleSheet};
    content.scripts = {script};
    if (!AreMenusConfigured()) {
        data::Menu menu(util::Translatable("Service"));
        menu << data::Menu("Assembly SN", "/service/assemblysn");
        content.menus = {menu};
    }

    std::string const current = util::SystemAssemblySN();
    std::string const pressed = HttpPost() ? HttpPost("btnASN") : "";
    if (pressed == forms::rebootForSerialNumber) {
        content.rebooting = content.disable_inputs = true;
        util::ForkReboot();
    } else if (pressed == forms::saveSerialNumber) {
        content.message = _ChangeSerialNumber(content.form, current);
    }
    content.form.current.value(current);
    render("AssemblySerialN", content);
}

data::Message Service::_ChangeSerialNumber(forms::AssemblySerialN &form, std::string const &current) {
    if (!ValidateForm(form))
        return data::Message::ValidationError();
    if (form.next.value() == current)
        return data::Message::OK("Assembly SN already set");
    if (!util::SetSystemAssemblySN(form.next.value()))
        return data::Message::Error("Failed to change assembly SN");
    form.OfferReboot();
    return data::Message::OK("Assembly SN changed. Reboot is required to take effect");
}

}  // namespace webconfig::apps

#include "WebApps/webconfig/apps/Regulatory.h"

#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>
#include <prm/prmlib.h>

#include <utility>

#include "WebApps/webconfig/apps/BuildStamp.h"
#include "WebApps/webconfig/apps/MediaRoot.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Regulatory";
constexpr auto storeClient = static_cast<PRM_CLIENT_ID_T>(24);
constexpr char domainKey[] = "net/wifi/region_code";
constexpr char vendorKey[] = "net/wifi/vendor";

}  // namespace

Regulatory::Regulatory(cppcms::service &service, std::string appVolumeName)
    : Base(service, std::move(appVolumeName)) {
    mapper().assign("wifi", "/wifi");
    dispatcher().assign("/wifi", &Regulatory::WifiHandler, this);
}

void Regulatory::WifiHandler() {
    data::RegulatoryWifi content;
    content.nonce = Nonce();
    cPrmLib store(storeClient);
    if (store.getPar(domainKey, content.domain) != 0)
        content.message = data::Message::Error("could not read current regulatory domain");
    std::string vendor;
    content.supported = store.getPar(vendorKey, vendor) == 0 && vendor == "laird";

    if (HttpPost() && content.supported) {
        if (HttpPost("Save") == "Save") {
            _SetDomain(content, store);
        } else if (HttpPost("Reboot") == "Reboot") {
            content.rebooting = true;
            content.message = data::Message::OK("Successfully rebooted");
        }
    }
    std::string const scripts = MediaRoot(settings()) + "/js/";
    content.script = scripts + "regulatory_wifi.js?rev=" + buildStamp;
    content.language = util::Language();
    if (!content.language.empty())
        content.catalogue = scripts + "text." + content.language + ".js?rev=" + buildStamp;
    render("RegulatoryWifi", content);
    if (content.rebooting)
        util::ForkReboot();
}

void Regulatory::_SetDomain(data::RegulatoryWifi &content, cPrmLib &store) {
    std::string const domain = HttpPost("hidden_domain");
    if (domain == content.domain) {
        content.message = data::Message::Error("This regulatory domain is already set");
        return;
    }
    if (domain.empty())
        return;
    std::string output;
    util::ShellCommand(util::Command("lmu").Arg("-r").Arg(domain), output);
    if (output.find("successfully set") == std::string::npos) {
        content.message = data::Message::Error("Could not set regulatory domain");
        return;
    }
    content.message =
        data::Message::OK("Regulatory domain was changed. Reboot for the changes to take effect");
    // The module has changed, whatever becomes of the note of it.
    bool const stored = store.setPar(domainKey, domain) == 0;
    util::Happened("setting", util::OutcomeOf(stored), {{"key", domainKey}, {"operation", "setPar"}});
    if (!stored)
        WEBCONFIG_LOG(error, logTag) << "FAIL prmlib::setPar \"" << domainKey << '"';
    content.domain = domain;
    content.changed = true;
}

}  // namespace webconfig::apps

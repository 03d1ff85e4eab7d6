#include "WebApps/webconfig/apps/WebConfig.h"

#include <cppcms/json.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

#include <memory>
#include <utility>

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/Plugins.h"
#include "WebApps/webconfig/apps/Regulatory.h"
#include "WebApps/webconfig/apps/Service.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

WebConfig::WebConfig(cppcms::service &service) : cppcms::application(service) {
    // Settings accept up to three path segments and must end there.
    auto settingsPages = std::make_unique<Settings>(service);
    dispatcher().assign("/?", &Settings::General, settingsPages.get());
    attach(settingsPages.release(), "settings", "/settings{1}", "/settings((?:/[^/]*){0,3}$)", 1);
    // Networks accept one segment at most.
    attach(new Network(service), "network", "/network{1}", "/network(/[^/]*$)?", 1);
    attach(new Regulatory(service, ""), "regulatory", "/regulatory{1}", "/regulatory(/(.*))?", 1);
    attach(new Service(service, ""), "service", "/service{1}", "/service(/(.*))?", 1);

    if (auto *const plugins = Plugins(settings()))
        plugins->AttachSynchronousAppsHook(*this, service);

    mapper().root('/' + settings().get<std::string>("webconfig.root.sync"));
}

void WebConfig::main(std::string url) {
    if (util::IsFirmwareUpgradeRunning())
        cppcms::application::main("/settings/firmware_upgrade_status");
    else
        cppcms::application::main(std::move(url));
}

}  // namespace webconfig::apps

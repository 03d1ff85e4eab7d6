#include "WebApps/webconfig/apps/WebConfig.h"

#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/Plugins.h"
#include "WebApps/webconfig/apps/Regulatory.h"
#include "WebApps/webconfig/apps/SaveTurn.h"
#include "WebApps/webconfig/apps/Service.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/security/Audit.h"
#include "WebApps/webconfig/settings/Languages.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/WebConfig";
constexpr int serviceUnavailable = 503;

}  // namespace

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

    mapper().assign("/");  // the General page, for menus
    mapper().root('/' + settings().get<std::string>("webconfig.root.sync"));
}

void WebConfig::main(std::string url) {
    security::AuditedRequest const audited(*this);
    std::string language = settings::StoredLanguage();
    if (!language.empty())
        context().locale(language + ".UTF-8");
    std::replace(language.begin(), language.end(), '_', '-');
    util::Speaking const speaking(context().locale(), language);
    std::optional<Saving> saving;
    if (request().request_method() == "POST") {
        saving.emplace(service());
        if (auto const *const refusal = saving->Refused()) {
            WEBCONFIG_LOG(warning, logTag) << "Refused to save: " << refusal->reason;
            response().make_error_response(serviceUnavailable, util::Translate(refusal->text));
            return;
        }
    }
    history::Recording const recording([this, &url] {
        return util::Requester{request().remote_user(), request().remote_addr(), url.empty() ? "/" : url};
    });
    if (util::IsFirmwareUpgradeRunning())
        cppcms::application::main("/settings/firmware_upgrade_status");
    else
        cppcms::application::main(url);
}

}  // namespace webconfig::apps

#include "WebApps/webconfig/apps/Base.h"

#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/json.h>

#include <utility>

#include "WebApps/webconfig/apps/BuildStamp.h"
#include "WebApps/webconfig/apps/MediaRoot.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

Base::Base(cppcms::service &service, std::string appVolumeName)
    : cppcms::application(service), _appVolumeName(std::move(appVolumeName)) {}

void Base::Prepare(data::Base &content) {
    auto const &branding = settings().find("webconfig.branding");
    content.branding.footer_right_text = branding.get("footer_right_text", "");
    content.branding.footer_left_text = branding.get("footer_left_text", "");
    content.branding.banner_text = branding.get("banner_text", "");
    content.branding.window_text = branding.get("window_text", "");
    content.branding.banner_html = branding.get("banner_html", "");
    content.branding.footer_html = branding.get("footer_html", "");

    PrepareMenus(content.menus);

    content.media_root = MediaRoot(settings());
    content.plugin_media_root = PluginMediaRoot(settings()) + '/' + _appVolumeName;
    content.revision = buildStamp;
    content.reboot_required = util::IsRebootRequired();
}

void Base::PrepareMenus(std::vector<data::Menu> &menus) {
    data::Menu settingsMenu("Settings");
    settingsMenu << data::Menu("Firmware", "/settings/firmware") << data::Menu("Reboot", "/settings/reboot")
                 << data::Menu("Advanced", "/settings/advanced");
    menus.push_back(settingsMenu);
}

bool Base::HttpGet() {
    return request().request_method() == "GET";
}

bool Base::HttpPost() {
    return request().request_method() == "POST";
}

bool Base::HttpPut() {
    return request().request_method() == "PUT";
}

std::string Base::HttpGet(std::string const &name) {
    return request().get(name);
}

std::string Base::HttpPost(std::string const &name) {
    return request().post(name);
}

bool Base::ValidateForm(forms::Base &form) {
    form.load(context());
    return form.validate();
}

void Base::RequireReboot(data::Base &content) {
    util::MarkRebootRequired();
    content.reboot_required = util::IsRebootRequired();
}

bool Base::UsingInternalServer() {
    return settings().get<std::string>("service.api") == "http";
}

std::string Base::StatusUrl() {
    return '/' + settings().get<std::string>("webconfig.root.async") + '/' +
           settings().get<std::string>("webconfig.root.rpc");
}

}  // namespace webconfig::apps

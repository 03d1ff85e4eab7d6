#include "WebApps/webconfig/apps/Base.h"

#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>

#include <utility>

#include "WebApps/webconfig/apps/BuildStamp.h"
#include "WebApps/webconfig/apps/MediaRoot.h"
#include "WebApps/webconfig/apps/Plugins.h"
#include "WebApps/webconfig/apps/SaveTurn.h"
#include "WebApps/webconfig/apps/settings/Pages.h"
#include "WebApps/webconfig/data/History.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/security/DefaultPassword.h"
#include "WebApps/webconfig/security/Headers.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

Base::Base(cppcms::service &service, std::string appVolumeName)
    : cppcms::application(service), _appVolumeName(std::move(appVolumeName)) {}

void Base::Prepare(data::Base &content) {
    auto *const plugins = Plugins(settings());
    content.branding = util::ReadBranding(settings().find("webconfig.branding"));
    if (plugins) {
        plugins->PopulateBranding(content.branding);
        plugins->PopulateMenuStartHook(content.menus);
    }
    for (auto *const text : {&content.branding.window_text, &content.branding.banner_text,
                             &content.branding.footer_left_text, &content.branding.footer_right_text})
        *text = util::Translate(*text);
    PrepareMenus(content.menus);
    auto const &configured = data::ConfiguredMenus();
    content.menus.insert(content.menus.end(), configured.begin(), configured.end());

    content.language = util::Language();
    content.media_root = MediaRoot(settings());
    std::string const pluginMediaRoot = PluginMediaRoot(settings());
    content.plugin_media_root = pluginMediaRoot + '/' + _appVolumeName;
    content.bundle = settings().get("webconfig.bundle", false);
    content.revision = buildStamp;
    content.reboot_required = util::IsRebootRequired();
    content.default_password = security::IsDefaultPasswordAlerted();
    content.nonce = Nonce();

    if (plugins) {
        plugins->PopulateMenuEndHook(content.menus);
        plugins->PopulateStyleSheets(pluginMediaRoot, content.style_sheets);
        plugins->PopulateScripts(pluginMediaRoot, content.scripts);
    }
}

void Base::Prepare(data::BaseTabbed &content) {
    Prepare(static_cast<data::Base &>(content));
    content.status_url = StatusUrl();
}

void Base::PrepareMenus(std::vector<data::Menu> &menus) {
    data::Menu settingsMenu(util::Translatable("Settings"));
    for (auto const &page : settingsPages) {
        if (page.menu && page.IsOffered())
            settingsMenu.GetChildren().emplace_back(page.menu, std::string("/settings/") + page.name);
    }
    menus.push_back(std::move(settingsMenu));
}

void Base::render(std::string const &view, cppcms::base_content &content) {
    _EndSaving(content);
    _NameWindow(content);
    cppcms::application::render(view, content);
}

void Base::render(std::string const &skin, std::string const &view, cppcms::base_content &content) {
    _EndSaving(content);
    _NameWindow(content);
    cppcms::application::render(skin, view, content);
}

bool Base::AreMenusConfigured() {
    return !settings().find("webconfig.menus").is_undefined();
}

/// Ends the turn, and the change set: what is written from here on would be another one.
void Base::_EndSaving(cppcms::base_content &content) {
    EndSaveTurn();
    auto *const recording = history::Recording::Current();
    if (!recording)
        return;
    recording->Finish();
    if (auto *const page = dynamic_cast<data::Base *>(&content)) {
        page->saved_changes = data::Described(recording->Changes());
        page->change_set = std::to_string(recording->Number());
        page->history_failed = recording->HasFailed();
        page->trial = data::Told(history::CurrentTrial());
    }
}

/// Among the windows of many devices, this page of this one, by its present name, and what became of what was
/// sent to it.
void Base::_NameWindow(cppcms::base_content &content) {
    auto *const page = dynamic_cast<data::Base *>(&content);
    if (!page || !settings().get("webconfig.show_device_name", false))
        return;
    page->device_name = util::Prm::GetString("net/hostname");
    std::string outcome = page->title;
    if (HttpPost() && page->message.GetResultClass() == data::Message::ResultClass::Error)
        outcome = util::Translate("Error: {1}", page->title);
    else if (HttpPost() && page->message.GetResultClass() == data::Message::ResultClass::Ok)
        outcome = util::Translate("Saved: {1}", page->title);
    page->branding.window_text = outcome + " \u2013 " + page->device_name;
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

void Base::EndSaveTurn() {
    SaveTurn::End();
}

std::string Base::Nonce() {
    if (!security::ThePolicy().headers)
        return {};
    std::string nonce = security::MakeNonce();
    response().set_header(security::policyHeader, security::PagePolicy(nonce));
    return nonce;
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

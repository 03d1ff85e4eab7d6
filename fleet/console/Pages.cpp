#include "fleet/console/Pages.h"

#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

#include <utility>

#include "WebApps/webconfig/apps/BuildStamp.h"
#include "WebApps/webconfig/security/Headers.h"

namespace fleet::console {

namespace {

constexpr char skin[] = "fleet";

}  // namespace

Pages::Pages(cppcms::service &service) : cppcms::application(service) {
    // A device's id is one by fleet::IsId().
    dispatcher().assign("/?", &Pages::_Devices, this);
    dispatcher().assign("/device/([-.\\w]{1,64})", &Pages::_Device, this, 1);
    dispatcher().assign("/roll_out", &Pages::_RollOut, this);
    dispatcher().assign("/rollouts", &Pages::_Rollouts, this);
    dispatcher().assign("/rollout/(\\d{1,9})", &Pages::_Rollout, this, 1);

    mapper().assign("devices", "/");
    mapper().assign("roll_out", "/roll_out");
    mapper().assign("rollouts", "/rollouts");
    mapper().root('/' + settings().get("fleet.root", "fleet"));
}

void Pages::main(std::string url) {
    namespace security = webconfig::security;
    // No page has inline scripts: nobody learns this nonce.
    response().set_header(security::policyHeader, security::PagePolicy(security::MakeNonce()));
    cppcms::application::main(url);
}

void Pages::_Show(std::string const &view, std::string title, std::string subject) {
    Page page;
    page.title = std::move(title);
    page.subject = std::move(subject);
    page.root = mapper().root();
    page.media_root = '/' + settings().get("fleet.media_root", "media");
    page.revision = webconfig::apps::buildStamp;
    page.user = request().remote_user();
    render(skin, view, page);
}

void Pages::_Devices() {
    _Show("Devices", "Devices");
}

void Pages::_Device(std::string id) {
    std::string title = id;
    _Show("Device", std::move(title), std::move(id));
}

void Pages::_RollOut() {
    _Show("RollOut", "New rollout");
}

void Pages::_Rollouts() {
    _Show("Rollouts", "Rollouts");
}

void Pages::_Rollout(std::string number) {
    std::string title = "Rollout " + number;
    _Show("Rollout", std::move(title), std::move(number));
}

}  // namespace fleet::console

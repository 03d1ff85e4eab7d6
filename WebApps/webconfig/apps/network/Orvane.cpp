#include "WebApps/webconfig/data/Orvane.h"

#include <algorithm>
#include <iterator>

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

constexpr char const *enabledKey = settings::Key("tern/enabled");
constexpr settings::Pattern serverKey("tern/*/server");
constexpr settings::Pattern portKey("tern/*/ipport");

/// A way to the site server, in the order of the tabs, which begin with the common one.
struct Path {
    std::string name;  // also of the submit button
    forms::Orvane data::Orvane::*form;
    unsigned tab;

    std::string ServerKey() const { return serverKey.With(name); }
    std::string PortKey() const { return portKey.With(name); }
};
Path const paths[] = {
    {"mesh", &data::Orvane::mesh, 1},
    {"cellular", &data::Orvane::cellular, 2},
    {"openvpn", &data::Orvane::openvpn, 3},
};

void SwitchLink(bool on) {
    bool const wasOn = util::IsOn(enabledKey);
    ParameterWriter().SetSwitch(enabledKey, on);
    if (on != wasOn)
        util::RunCommand(on ? settings::startSiteLink : settings::stopSiteLink);
}

/// Both values are written in any case.
data::Message Store(Path const &path, forms::Orvane &form) {
    bool const server = util::Prm::Set(path.ServerKey(), form.server.value());
    bool const port = util::Prm::Set(path.PortKey(), form.port.value());
    return server && port ? data::Message::SaveOK() : data::Message::SaveError();
}

void LoadFromStore(data::Orvane &content) {
    bool const enabled = util::IsOn(enabledKey);
    content.common.enabled.value(enabled);
    for (auto const &path : paths) {
        forms::Orvane &form = content.*path.form;
        form.server.value(util::Prm::GetString(path.ServerKey()));
        form.port.value(util::Prm::GetInt(path.PortKey()));
        form.SetState(enabled);
    }
}

}  // namespace

void Network::Orvane() {
    data::Orvane content;
    Prepare(content);
    content.title = util::Translate("Orvane Server Configuration");

    if (HttpPost()) {
        auto const isPressed = [this](std::string const &button) { return HttpPost(button) == "Save"; };
        auto const *const path = std::find_if(std::begin(paths), std::end(paths),
                                              [&](Path const &known) { return isPressed(known.name); });
        content.message = data::Message::ValidationError();
        if (isPressed("configuration")) {
            if (ValidateForm(content.common)) {
                SwitchLink(content.common.enabled.value());
                content.message = {};
            }
        } else if (path != std::end(paths)) {
            content.selected_tab = path->tab;
            if (ValidateForm(content.*path->form))
                content.message = Store(*path, content.*path->form);
        }
    }
    LoadFromStore(content);
    render("Orvane", content);
}

}  // namespace webconfig::apps

#include "WebApps/webconfig/data/General.h"

#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/metrics/Sampler.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char const *hostnameKey = settings::Key("net/hostname");
constexpr char const *languageKey = settings::Key("language");
constexpr unsigned maxOutput = 4096;

void LoadFromStore(forms::General &form) {
    form.deviceName.value(util::Prm::GetString(hostnameKey));
    std::string const language = util::Prm::GetString(languageKey);
    if (language.empty())
        form.language.selected(0);  // an empty id cannot be selected by value
    else
        forms::SelectByValue(form.language, language);
}

}  // namespace

void Settings::General() {
    data::General content;
    Prepare(content);
    content.title = util::Translate("General Device Configuration");
    content.assembly_sn = util::SystemAssemblySN();
    content.device_id = util::SystemDeviceID();
    content.metrics = metrics::IsSampling();

    if (!HttpPost()) {
        LoadFromStore(content.form);
    } else if (ValidateForm(content.form)) {
        ParameterWriter writer;
        writer.Set(hostnameKey, content.form.deviceName.value())
            .Set(languageKey, content.form.language.selected_id());
        content.message = writer.Result();
    } else {
        content.message = data::Message::ValidationError();
    }

    content.status.sections = {
        {util::Translate("Uname"), util::ShellCommand("uname -a", maxOutput)},
        {util::Translate("Version Info"), util::ShellCommand("cat /etc/version", maxOutput)}};
    render("General", content);
}

}  // namespace webconfig::apps

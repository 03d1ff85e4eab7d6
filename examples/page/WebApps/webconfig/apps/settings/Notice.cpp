#include "WebApps/webconfig/data/Notice.h"

#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps {

namespace {

constexpr char enabledKey[] = "system/notice/enabled";
constexpr char textKey[] = "system/notice/text";
constexpr char apply[] = "/usr/sbin/notice.sh > /dev/null";

void LoadFromStore(forms::Notice &form) {
    form.enabled.value(util::IsOn(enabledKey));
    form.text.value(util::Prm::GetString(textKey));
}

data::Message Save(forms::Notice &form) {
    ParameterWriter writer;
    writer.SetSwitchIfChanged(enabledKey, form.enabled.value()).SetIfChanged(textKey, form.text.value());
    if (writer.Ok() && (writer.Wrote(enabledKey) || writer.Wrote(textKey)) && util::RunCommand(apply) != 0)
        return data::Message::Error("Error: The notice was saved, but it is not in effect");
    return writer.Result();
}

}  // namespace

void Settings::Notice() {
    data::Notice content;
    Prepare(content);
    content.title = util::Translate("Notice");

    if (!HttpPost())
        LoadFromStore(content.form);
    else if (ValidateForm(content.form))
        content.message = Save(content.form);
    else
        content.message = data::Message::ValidationError();
    render("Notice", content);
}

}  // namespace webconfig::apps

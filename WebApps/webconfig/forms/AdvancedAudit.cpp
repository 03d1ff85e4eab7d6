#include "WebApps/webconfig/forms/AdvancedAudit.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::forms {

namespace {

using util::Translatable;

constexpr unsigned maxText = 64;

struct Option {
    char const *event;
    char const *text;
};
constexpr Option options[] = {
    {"", Translatable("All events")},        {"login", Translatable("Log-ins")},
    {"setting", Translatable("Settings")},   {"password", Translatable("Passwords")},
    {"upload", Translatable("Uploads")},     {"firmware", Translatable("Firmware")},
    {"download", Translatable("Downloads")}, {"erase", Translatable("Erasing")},
    {"reboot", Translatable("Reboots")},
};

}  // namespace

AdvancedAudit::AdvancedAudit() {
    SetUp(event, "auditEvent", "cfg_adv_audit_event", "Event");
    for (auto const &option : options)
        event.add(util::Translate(option.text), option.event);
    event.selected(0);
    add(event);

    SetUp(text, "auditText", "cfg_adv_audit_text", "Contains");
    util::validation::Length(text, 0, maxText);
    add(text);

    SetUpSubmit(show, "auditShow", noId, "Show");
    add(show);
}

}  // namespace webconfig::forms

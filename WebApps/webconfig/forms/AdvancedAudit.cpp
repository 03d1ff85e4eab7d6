#include "WebApps/webconfig/forms/AdvancedAudit.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

namespace {

constexpr unsigned maxText = 64;

struct Option {
    char const *event;
    char const *text;
};
constexpr Option options[] = {
    {"", "All events"},        {"login", "Log-ins"},  {"setting", "Settings"},
    {"password", "Passwords"}, {"upload", "Uploads"}, {"firmware", "Firmware"},
    {"download", "Downloads"}, {"erase", "Erasing"},  {"reboot", "Reboots"},
};

}  // namespace

AdvancedAudit::AdvancedAudit() {
    SetUp(event, "auditEvent", "cfg_adv_audit_event", "Event");
    for (auto const &option : options)
        event.add(option.text, option.event);
    event.selected(0);
    add(event);

    SetUp(text, "auditText", "cfg_adv_audit_text", "Contains");
    util::validation::Length(text, 0, maxText);
    add(text);

    SetUpSubmit(show, "auditShow", noId, "Show");
    add(show);
}

}  // namespace webconfig::forms

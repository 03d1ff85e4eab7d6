#include "WebApps/webconfig/data/AdvancedAudit.h"

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/security/Policy.h"

namespace webconfig::apps {

namespace {

constexpr unsigned auditTab = 5;
constexpr std::size_t recent = 20;  // entries that come with the page
constexpr std::size_t most = 200;   // and where somebody has asked for some

}  // namespace

void Settings::_ShowAudit(data::Advanced &content) {
    if (!security::ThePolicy().audit)
        return;
    data::AdvancedAudit &audit = content.audit.emplace();
    bool const asked = HttpGet() && !HttpGet(audit.form.show.name()).empty();
    if (asked) {
        content.selected_tab = auditTab;
        if (!ValidateForm(audit.form)) {
            content.message = data::Message::Error("The audit cannot be searched for this.");
            audit.form.clear();
        }
    }
    std::string const text = audit.form.text.set() ? audit.form.text.value() : "";
    auto entries =
        security::ReadAudit(security::auditFile, audit.form.event.selected_id(), text, asked ? most : recent);
    audit.readable = entries.has_value();
    if (entries)
        audit.entries = std::move(*entries);
}

}  // namespace webconfig::apps

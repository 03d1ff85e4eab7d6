#include "WebApps/webconfig/data/AdvancedAudit.h"

#include <utility>

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/security/Policy.h"

namespace webconfig::apps {

namespace {

/// The last tab, behind the one for a certificate, where that is there.
unsigned AuditTab() {
    constexpr unsigned othersBefore = 5;
    return othersBefore + (security::ThePolicy().certificate_upload ? 1 : 0);
}

constexpr std::size_t recent = 20;  // entries that come with the page
constexpr std::size_t most = 200;   // and where somebody has asked for some

}  // namespace

void Settings::_ShowAudit(data::Advanced &content) {
    if (!security::ThePolicy().audit)
        return;
    data::AdvancedAudit &audit = content.audit.emplace();
    bool const asked = HttpGet() && !HttpGet(audit.form.show.name()).empty();
    if (asked) {
        content.selected_tab = AuditTab();
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

#pragma once

#include <vector>

#include "WebApps/webconfig/forms/AdvancedAudit.h"
#include "WebApps/webconfig/security/AuditLog.h"

namespace webconfig::data {

/// The Advanced page's tab with the audit.
struct AdvancedAudit {
    forms::AdvancedAudit form;
    bool readable = false;
    std::vector<security::AuditEntry> entries;  // the newest first
};

}  // namespace webconfig::data

#pragma once

#include <optional>
#include <string>

#include "WebApps/webconfig/data/AdvancedAudit.h"
#include "WebApps/webconfig/data/AdvancedCertificate.h"
#include "WebApps/webconfig/data/AdvancedRestore.h"
#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/AdvancedAdministration.h"
#include "WebApps/webconfig/forms/AdvancedDownloads.h"
#include "WebApps/webconfig/forms/AdvancedPassword.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::data {

struct Advanced : public BaseTabbed {
    Advanced() { refresh_interval = 2000; }

    std::string log_partition;
    std::string data_partition;
    forms::AdvancedAdministration administration;
    forms::AdvancedPassword web_password{"Web", util::Translatable("Save Web Password")};
    forms::AdvancedPassword root_password{"Root", util::Translatable("Save Root Password")};
    forms::AdvancedConfiguration configuration;
    bool can_restore = false;                // where the configuration asks for it
    std::optional<AdvancedRestore> restore;  // where a backup was uploaded
    forms::AdvancedSyslog syslog;
    forms::AdvancedDeployerLog deployer_log;
    std::optional<AdvancedCertificate> certificate;  // where the policy lets it be uploaded
    std::optional<AdvancedAudit> audit;              // where the policy asks for one
};

}  // namespace webconfig::data

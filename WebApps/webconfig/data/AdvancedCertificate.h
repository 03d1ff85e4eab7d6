#pragma once

#include <optional>

#include "WebApps/webconfig/forms/AdvancedCertificate.h"
#include "WebApps/webconfig/util/Certificates.h"

namespace webconfig::data {

/// The Advanced page's tab with the web server's certificate.
struct AdvancedCertificate {
    /// Whether the operator is told that it is time for another one.
    bool EndsSoon() const { return current && current->days_left < warningDays; }
    bool HasEnded() const { return current && current->days_left < 0; }

    static constexpr int warningDays = 30;

    std::optional<util::ServerCertificate> current;  // nothing where it cannot be read
    forms::AdvancedCertificate form;
};

}  // namespace webconfig::data

#include "WebApps/webconfig/forms/AdvancedCertificate.h"

#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

namespace {

constexpr int maxFileSize = 65536;  // bytes: a key and a long chain have some ten thousand

}  // namespace

AdvancedCertificate::AdvancedCertificate() {
    SetUp(file, "certificateFile", "cfg_adv_certificate", "New certificate (PEM: private key and chain)");
    file.non_empty();
    file.limits(1, maxFileSize);
    file.error_message("A file of 64 KB at most is required");
    add(file);

    SetUpSubmit(install, "submit", noId, "Install Certificate");
    add(install);
}

}  // namespace webconfig::forms

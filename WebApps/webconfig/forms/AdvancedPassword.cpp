#include "WebApps/webconfig/forms/AdvancedPassword.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

AdvancedPassword::AdvancedPassword(std::string const &word, std::string const &caption) {
    SetUp(password, "password" + word, "cfg_adv_passwd_" + word, "New Password");
    util::validation::Limit(password, settings::Row("webman/digest/admin"));
    add(password);

    SetUp(confirmation, "passwordConfirm" + word, "cfg_adv_passwd_cnfm_" + word, "Confirm Password");
    util::validation::Limit(confirmation, settings::Row("webman/digest/admin"));
    add(confirmation);

    SetUpSubmit(save, "submit", noId, caption);
    add(save);
}

bool AdvancedPassword::IsEmpty() {
    return password.value().empty() && confirmation.value().empty();
}

bool AdvancedPassword::Agree() {
    if (password.value() == confirmation.value())
        return true;
    for (auto *const entry : {&password, &confirmation})
        util::validation::Refuse(*entry, "Passwords do not match");
    return false;
}

}  // namespace webconfig::forms

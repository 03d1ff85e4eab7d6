#include "WebApps/webconfig/forms/AdvancedPassword.h"

#include "WebApps/webconfig/forms/SetUp.h"
#include "WebApps/webconfig/forms/Validation.h"

namespace webconfig::forms {

namespace {

constexpr unsigned minLength = 5;

}  // namespace

AdvancedPassword::AdvancedPassword(std::string const &word) {
    SetUp(password, "password" + word, "cfg_adv_passwd_" + word, "New Password");
    util::validation::MinLength(password, minLength);
    add(password);

    SetUp(confirmation, "passwordConfirm" + word, "cfg_adv_passwd_cnfm_" + word, "Confirm Password");
    util::validation::MinLength(confirmation, minLength);
    add(confirmation);

    SetUpSubmit(save, "submit", noId, "Save " + word + " Password");
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

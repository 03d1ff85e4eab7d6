#include "WebApps/webconfig/security/Policy.h"

#include <utility>

#include "WebApps/webconfig/util/Log.h"

namespace webconfig::security {

namespace {

constexpr char logTag[] = "WebApps/webconfig/security/Policy";
constexpr char hostsKey[] = "hosts";

struct Key {
    char const *name;
    bool Policy::*member;
};

constexpr Key keys[] = {
    {"same_origin", &Policy::same_origin},
    {"headers", &Policy::headers},
    {"default_password_alert", &Policy::default_password_alert},
    {"digest_sha256", &Policy::digest_sha256},
    {"certificate_upload", &Policy::certificate_upload},
    {"refuse_vpn_scripts", &Policy::refuse_vpn_scripts},
    {"hide_secrets", &Policy::hide_secrets},
    {"refuse_control_characters", &Policy::refuse_control_characters},
    {"audit", &Policy::audit},
    {"firmware_verdict", &Policy::firmware_verdict},
    {"signed_firmware", &Policy::signed_firmware},
};

Policy &Current() {
    static Policy policy;
    return policy;
}

void Take(Policy &policy, std::string const &name, cppcms::json::value const &value) {
    if (name == hostsKey) {
        policy.hosts = value.get_value<std::vector<std::string>>();
        return;
    }
    for (auto const &key : keys) {
        if (name == key.name) {
            policy.*key.member = value.get_value<bool>();
            return;
        }
    }
    policy.unknown.push_back(name);
}

}  // namespace

Policy ReadPolicy(cppcms::json::value const &settings) {
    Policy policy;
    cppcms::json::value const &members = settings.find("webconfig.security");
    if (!members.is_undefined()) {
        for (auto const &[name, value] : members.object())
            Take(policy, name.str(), value);
    }
    return policy;
}

Policy const &ThePolicy() {
    return Current();
}

void SetPolicy(Policy policy) {
    for (auto const &name : policy.unknown)
        WEBCONFIG_LOG(warning, logTag) << "webconfig.security." << name << " is unknown, and does nothing";
    Current() = std::move(policy);
}

}  // namespace webconfig::security

#include "WebApps/webconfig/widgets/IpAddress.h"

#include <booster/regex.h>

namespace webconfig::widgets {

IpAddress::IpAddress() : cppcms::widgets::regex_field(RegexString(false)) {}

std::string const &IpAddress::RegexString(bool allowEmpty) {
    static std::string const address =
        "^(([0-9]|[0-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\\.){3}"
        "([0-9]|[0-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])$";
    static std::string const addressOrEmpty = '(' + address + "|^$)";
    return allowEmpty ? addressOrEmpty : address;
}

void IpAddress::SetAllowEmpty(bool allowEmpty) {
    _allowEmpty = allowEmpty;
    regex(booster::regex(RegexString(allowEmpty)));
}

}  // namespace webconfig::widgets

#include "WebApps/webconfig/widgets/IpAddress.h"

#include <booster/regex.h>

#include "WebApps/webconfig/settings/Rules.h"

namespace webconfig::widgets {

namespace {

/// Compiled once for all widgets.
booster::regex const &Expression(bool allowEmpty) {
    static booster::regex const address(IpAddress::RegexString(false));
    static booster::regex const addressOrEmpty(IpAddress::RegexString(true));
    return allowEmpty ? addressOrEmpty : address;
}

}  // namespace

IpAddress::IpAddress() : cppcms::widgets::regex_field(Expression(false)) {}

std::string const &IpAddress::RegexString(bool allowEmpty) {
    static std::string const address = settings::addressExpression;
    static std::string const addressOrEmpty = '(' + address + "|^$)";
    return allowEmpty ? addressOrEmpty : address;
}

void IpAddress::SetAllowEmpty(bool allowEmpty) {
    _allowEmpty = allowEmpty;
    regex(Expression(allowEmpty));
}

}  // namespace webconfig::widgets

#pragma once

#include <string>

/// What answers tell browsers to forbid their pages.
namespace webconfig::security {

struct Header {
    char const *name;
    char const *value;
};

/// Every answer has these, errors included, unless the application sets its own or erases one; what has no
/// value is never sent. Pages have a policy of their own, see below.
inline constexpr Header headers[] = {
    {"Content-Security-Policy",
     "default-src 'none'; img-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
    {"Referrer-Policy", "same-origin"},  // with "no-referrer" the origin of our own forms would be "null"
    {"Permissions-Policy",
     "accelerometer=(), camera=(), display-capture=(), geolocation=(), gyroscope=(), magnetometer=(), "
     "microphone=(), midi=(), payment=(), usb=()"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
    {"Server", ""},
    {"X-Powered-By", ""},
};

inline constexpr char policyHeader[] = "Content-Security-Policy";

/// The policy of a page: what it loads and asks comes from here, and of its inline scripts and style sheets
/// only those that carry the \a nonce count.
std::string PagePolicy(std::string const &nonce);

/// A text that nobody can guess, a new one each time. Throws std::system_error where there is no randomness.
std::string MakeNonce();

}  // namespace webconfig::security

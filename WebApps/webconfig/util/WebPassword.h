#pragma once

#include <string>

namespace webconfig::util {

/// The hash of \a password that the web server compares a log-in by SHA-256 with, in hexadecimal digits;
/// empty where it cannot be made.
std::string WebPasswordSha256(std::string const &password);

}  // namespace webconfig::util

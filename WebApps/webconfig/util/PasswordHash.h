#pragma once

#include <string>

/// What is stored of passwords. With a hardened shell none of them stands in a command line, where every user
/// of the device could read it.
namespace webconfig::util {

/// The hash that the web server compares a log-in with: of the user "admin", its realm and \a password. Empty
/// where none can be made.
std::string WebPasswordHash(std::string const &password);

/// The same for log-ins by SHA-256, behind the other \a hash: who changes only that one, as all did when
/// there was no other, makes this one void. So this one is to be stored first: what fails then leaves none
/// that counts.
std::string WebPasswordSha256(std::string const &hash, std::string const &password);

/// The hash that the device's "cryptpw" makes of \a password. Empty where it makes none.
std::string RootPasswordHash(std::string const &password);

/// Puts the hash of root's password into effect; false where that fails.
bool SetRootPasswordHash(std::string const &hash);

}  // namespace webconfig::util

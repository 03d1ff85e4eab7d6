#pragma once

#include <string>

namespace webconfig::util {

/// The issuer and the subject of the certificate in the first "<cert>" section of an OpenVPN configuration,
/// each on one line ("/O=Organization/CN=Name"). Both empty, false and a log line where the file cannot be
/// read, has no such section, or there is no certificate in it.
bool GetCertificateDetails(std::string const &path, std::string &issuer, std::string &subject);

/// The same for the text of such a file.
bool ReadCertificateDetails(std::string const &configuration, std::string &issuer, std::string &subject);

}  // namespace webconfig::util

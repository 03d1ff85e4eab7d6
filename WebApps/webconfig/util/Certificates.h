#pragma once

#include <optional>
#include <string>

#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util {

/// The issuer and the subject of the certificate in the first "<cert>" section of an OpenVPN configuration,
/// each on one line ("/O=Organization/CN=Name"). Both empty, false and a log line where the file cannot be
/// read, has no such section, or there is no certificate in it.
bool GetCertificateDetails(std::string const &path, std::string &issuer, std::string &subject);

/// The same for the text of such a file.
bool ReadCertificateDetails(std::string const &configuration, std::string &issuer, std::string &subject);

/// What is told of the certificate of a web server.
struct ServerCertificate {
    std::string subject;  ///< on one line
    std::string names;    ///< that it is for: "DNS:device, IP Address:192.168.0.1"
    std::string issuer;
    std::string expires;  ///< "Nov 22 08:15:00 2036 GMT"
    int days_left = 0;    ///< whole days until then; negative afterwards
};

/// The first certificate of a PEM text; nothing where there is none.
std::optional<ServerCertificate> DescribeServerCertificate(std::string const &pem);

/// Why a web server is not to serve with the private key and the certificates of a PEM text, for the
/// operator; empty where it can: there is a key, without a password, strong enough, and the first certificate
/// is its own, for a server, valid now, and issued by the next one, if any, and so on.
Bilingual ServerCertificateProblem(std::string const &pem);

/// The text of the file that the web server has both in; empty where it cannot be read.
std::string ReadCertificateFile(std::string const &path);

}  // namespace webconfig::util

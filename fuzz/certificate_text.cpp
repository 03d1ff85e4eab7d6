// An uploaded OpenVPN configuration: there are names only where there is a certificate, one line each.
#include <booster/log.h>

#include <cassert>
#include <string>

#include "WebApps/webconfig/util/Certificates.h"
#include "WebApps/webconfig/util/Strings.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string const configuration(reinterpret_cast<char const *>(data), size);
    std::string issuer;
    std::string subject;
    if (!webconfig::util::ReadCertificateDetails(configuration, issuer, subject))
        assert(issuer.empty() && subject.empty());
    for (std::string const &name : {issuer, subject}) {
        assert(name.find('\n') == std::string::npos);
        assert(webconfig::util::TextBetween(name, "CN=", ",/").size() <= name.size());
    }
    return 0;
}

// An uploaded OpenVPN configuration: there are names only where there is a certificate, one line each;
// nothing in front of a line that runs a program hides it.
#include <booster/log.h>

#include <cassert>
#include <string>

#include "WebApps/webconfig/util/Certificates.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/VpnConfiguration.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string const configuration(reinterpret_cast<char const *>(data), size);
    std::string issuer;
    std::string subject;
    if (!webconfig::util::ReadCertificateDetails(configuration, issuer, subject))
        assert(issuer.empty() && subject.empty());
    assert(!webconfig::util::HarmInVpnConfiguration(configuration + "\nup run\n").empty());
    for (std::string const &name : {issuer, subject}) {
        assert(name.find('\n') == std::string::npos);
        assert(webconfig::util::TextBetween(name, "CN=", ",/").size() <= name.size());
    }
    return 0;
}

#include "WebApps/webconfig/data/AdvancedCertificate.h"

#include <cppcms/http_file.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <sstream>

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/util/Digest.h"
#include "WebApps/webconfig/util/Happened.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Settings";

constexpr char certificateFile[] = "/etc/lighttpd/server.pem";

/// Makes the web server begin anew with the certificate; fails, and changes nothing, where it could not serve
/// with it.
constexpr char takeCertificate[] = "/usr/sbin/lighttpd_take_certificate.sh > /dev/null";

data::Message Failure(util::Bilingual const &reason) {
    WEBCONFIG_LOG(error, logTag) << "The certificate was not installed: " << reason.english;
    return data::Message::Error(
        util::Translate("Error: The certificate was not installed: {1}", reason.shown));
}

/// Stores \a pem and lets the web server take it. Where it does not, what was there is put back.
data::Message Install(std::string const &pem) {
    auto const problem = util::ServerCertificateProblem(pem);
    if (!problem.empty())
        return Failure(problem);
    std::string const before = util::ReadCertificateFile(certificateFile);
    if (!util::ReplaceFile(certificateFile, pem))
        return Failure(util::Bilingual("It could not be stored: {1}", std::strerror(errno)));
    if (util::RunCommand(takeCertificate) != 0) {
        if (!before.empty())
            util::ReplaceFile(certificateFile, before);
        return Failure(util::Bilingual("The web server does not take it"));
    }
    WEBCONFIG_LOG(notice, logTag) << "The web server has a new certificate";
    return data::Message::OK("Success: The web server has the new certificate.");
}

std::string Sha256(std::string const &text) {
    std::istringstream stream(text);
    return util::Hex(util::DigestOf(stream, util::DigestKind::Sha256));
}

}  // namespace

bool Settings::_InstallCertificate(data::Advanced &content) {
    if (!content.certificate) {
        WEBCONFIG_LOG(error, logTag) << "Unknown submit received";
        return false;
    }
    forms::AdvancedCertificate &form = content.certificate->form;
    if (!ValidateForm(form)) {
        content.message = data::Message::ValidationError();
        return false;
    }
    auto const upload = form.file.value();
    std::string const pem(std::istreambuf_iterator<char>(upload->data()), {});
    content.message = Install(pem);
    if (content.message.GetResultClass() == data::Message::ResultClass::Ok)
        util::Happened(
            "upload", util::Outcome::Ok,
            {{"sha256", Sha256(pem)}, {"size", std::to_string(pem.size())}, {"name", upload->filename()}});
    return false;
}

void Settings::_DescribeCertificate(data::Advanced &content) {
    if (content.certificate)
        content.certificate->current =
            util::DescribeServerCertificate(util::ReadCertificateFile(certificateFile));
}

}  // namespace webconfig::apps

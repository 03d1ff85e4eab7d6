#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/apps/settings/Advanced.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/security/DefaultPassword.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/util/Util.h"
#include "WebApps/webconfig/util/WebPassword.h"

namespace webconfig::apps {

namespace {

constexpr char webSha256Key[] = "webman/digest256/admin";
constexpr char rootHashKey[] = "system/digest/root";
constexpr char webAccount[] = "admin:Orvane Configuration Tool:";  // user and realm of the web server
constexpr unsigned maxOutput = 4096;

/// Some shells' echo takes backslashes for its own, so a password that has one goes another way, where
/// commands may be hardened.
util::Command DigestCommand(std::string const &password) {
    bool const printed = util::IsShellHardened() && password.find('\\') != std::string::npos;
    return (printed ? util::Command("printf %s") : util::Command("echo -n"))
        .DoubleQuoted(webAccount + password)
        .Then("| md5sum | cut -d' ' -f1");
}

/// What \a command prints; empty where that is no hash but, say, how the program is to be used.
std::string HashOf(util::Command const &command) {
    constexpr std::size_t shortestHash = 13;
    constexpr char alphabet[] = "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz$=,_-";
    std::string const output = util::Trim(util::ShellCommand(command, maxOutput));
    bool const isHash =
        output.size() >= shortestHash && output.find_first_not_of(alphabet) == std::string::npos;
    return isHash ? output : "";
}

/// Stores \a hash and, where that succeeds, empties \a form and runs \a command to put the hash into effect.
data::Message StoreHash(forms::AdvancedPassword &form, char const *key, std::string const &hash,
                        util::Command const &command) {
    ParameterWriter writer;
    writer.Set(key, hash);
    if (writer.Ok()) {
        form.clear();
        util::RunCommand(command);
        util::RunCommand(applyRemoteAccess);
    }
    return writer.Result();
}

/// Stores the second hash of a web password behind the first one, \a hash: who changes only that one, as all
/// did when there was no other, makes the second void. So it is written first: what fails then leaves no
/// second one that counts.
bool StoreSha256(std::string const &hash, std::string const &password) {
    std::string const sha256 = util::WebPasswordSha256(password);
    return !sha256.empty() && ParameterWriter().Set(webSha256Key, hash + ':' + sha256).Ok();
}

}  // namespace

bool Settings::_SaveWebPassword(data::Advanced &content) {
    content.message = ValidateForm(content.web_password) ? _WebPassword(content.web_password)
                                                         : data::Message::ValidationError();
    content.default_password = security::IsDefaultPasswordAlerted();
    return false;
}

data::Message Settings::_WebPassword(forms::AdvancedPassword &form) {
    if (!form.Agree())
        return data::Message::ValidationError();
    std::string const hash = HashOf(DigestCommand(form.password.value()));
    if (hash.empty())
        return data::Message::Error("Error: The web password could not be changed");
    if (security::ThePolicy().digest_sha256 && !StoreSha256(hash, form.password.value()))
        return data::Message::SaveError();
    return StoreHash(form, security::webDigestKey, hash,
                     util::Command("/usr/sbin/lighttpd_set_passwd.sh > /dev/null"));
}

bool Settings::_SaveRootPassword(data::Advanced &content) {
    forms::AdvancedPassword &form = content.root_password;
    form.load(context());
    // Two empty entries count as success and change nothing, on purpose.
    if (form.IsEmpty())
        content.message = data::Message::SaveOK();
    else
        content.message = form.validate() ? _RootPassword(form) : data::Message::ValidationError();
    return false;
}

data::Message Settings::_RootPassword(forms::AdvancedPassword &form) {
    if (!form.Agree())
        return data::Message::SaveError();
    std::string const hash = HashOf(util::Command("cryptpw").EndOptions().Arg(form.password.value()));
    if (hash.empty())
        return data::Message::SaveError();
    return StoreHash(
        form, rootHashKey, hash,
        util::Command("echo -n").SingleQuoted("root:" + hash).Then("| chpasswd --encrypted > /dev/null"));
}

}  // namespace webconfig::apps

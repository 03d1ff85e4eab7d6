#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/apps/settings/Advanced.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char webDigestKey[] = "webman/digest/admin";
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

/// Stores \a hash and, where that succeeds, runs \a command to put it into effect.
data::Message StoreHash(char const *key, std::string const &hash, util::Command const &command) {
    ParameterWriter writer;
    writer.Set(key, hash);
    if (writer.Ok()) {
        util::RunCommand(command);
        util::RunCommand(applyRemoteAccess);
    }
    return writer.Result();
}

}  // namespace

bool Settings::_SaveWebPassword(data::Advanced &content) {
    content.message = ValidateForm(content.web_password) ? _WebPassword(content.web_password)
                                                         : data::Message::ValidationError();
    return false;
}

data::Message Settings::_WebPassword(forms::AdvancedPassword &form) {
    if (!form.Agree())
        return data::Message::ValidationError();
    std::string const hash = util::Trim(util::ShellCommand(DigestCommand(form.password.value()), maxOutput));
    if (hash.empty())
        return data::Message::Error("Error: The web password could not be changed");
    form.clear();
    return StoreHash(webDigestKey, hash, util::Command("/usr/sbin/lighttpd_set_passwd.sh > /dev/null"));
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
    util::Command const command = util::Command("cryptpw").Arg(form.password.value());
    std::string const hash = util::Trim(util::ShellCommand(command, maxOutput));
    if (hash.empty())
        return data::Message::SaveError();
    form.clear();
    return StoreHash(
        rootHashKey, hash,
        util::Command("echo -n").SingleQuoted("root:" + hash).Then("| chpasswd --encrypted > /dev/null"));
}

}  // namespace webconfig::apps

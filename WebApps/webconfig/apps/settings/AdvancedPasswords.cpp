#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/data/Advanced.h"
#include "WebApps/webconfig/security/DefaultPassword.h"
#include "WebApps/webconfig/security/Policy.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/util/PasswordHash.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char const *webSha256Key = settings::Key("webman/digest256/admin");
constexpr char const *rootHashKey = settings::Key("system/digest/root");

/// Stores \a hash and, where that succeeds, empties \a form and puts the hash into effect.
data::Message StoreHash(forms::AdvancedPassword &form, char const *key, std::string const &hash,
                        bool (*apply)(std::string const &hash)) {
    ParameterWriter writer;
    writer.Set(key, hash);
    if (writer.Ok()) {
        form.clear();
        apply(hash);
        util::RunCommand(settings::applyRemoteAccess);
    }
    return writer.Result();
}

/// Stores the second hash of a web password, which comes before the first one, \a hash.
bool StoreSha256(std::string const &hash, std::string const &password) {
    std::string const sha256 = util::WebPasswordSha256(hash, password);
    return !sha256.empty() && ParameterWriter().Set(webSha256Key, sha256).Ok();
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
    std::string const hash = util::WebPasswordHash(form.password.value());
    if (hash.empty())
        return data::Message::Error("Error: The web password could not be changed");
    if (security::ThePolicy().digest_sha256 && !StoreSha256(hash, form.password.value()))
        return data::Message::SaveError();
    return StoreHash(form, security::webDigestKey, hash, [](std::string const & /*from the store*/) {
        return util::RunCommand(settings::applyWebPassword) == 0;
    });
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
    std::string const hash = util::RootPasswordHash(form.password.value());
    if (hash.empty())
        return data::Message::SaveError();
    return StoreHash(form, rootHashKey, hash, util::SetRootPasswordHash);
}

}  // namespace webconfig::apps

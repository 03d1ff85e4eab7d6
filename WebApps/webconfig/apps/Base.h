#pragma once

#include <cppcms/application.h>

#include <string>
#include <vector>

#include "WebApps/webconfig/data/Base.h"
#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Base.h"

namespace webconfig::apps {

/// Base of the page applications. It keeps nothing between requests: a handler calls Prepare() on its own
/// record first, then fills in what is the page's own.
class Base : public cppcms::application {
  public:
    /// \a appVolumeName is the last part of the application's plug-in media URL; empty for built-in ones.
    Base(cppcms::service &service, std::string appVolumeName);

    /// Fills the shared part of a page's record: branding, menus, media URLs, build stamp, alerts, nonce.
    virtual void Prepare(data::Base &content);
    /// The same, and where the status tab's polls go.
    void Prepare(data::BaseTabbed &content);
    /// Appends the built-in menus. Those of the configuration follow; further ones are appended by handlers
    /// after Prepare().
    virtual void PrepareMenus(std::vector<data::Menu> &menus);

    /// As the framework's own, with what the request has changed and after EndSaveTurn().
    void render(std::string const &view, cppcms::base_content &content);
    void render(std::string const &skin, std::string const &view, cppcms::base_content &content);

  protected:
    bool HttpGet();
    bool HttpPost();
    bool HttpPut();
    /// A variable of the query string, or a posted one; empty when absent.
    std::string HttpGet(std::string const &name);
    std::string HttpPost(std::string const &name);

    /// Loads the form from the request and validates it. For POST only.
    bool ValidateForm(forms::Base &form);

    /// From here on the request neither stores settings nor applies them: another one may, however slowly the
    /// client takes its answer.
    static void EndSaveTurn();

    /// What inline scripts and style sheets of this answer have to carry. Empty where the policy asks for no
    /// headers.
    std::string Nonce();

    /// Whether the configuration has menus of its own, by "webconfig.menus": pages then show those.
    bool AreMenusConfigured();

    /// Raises the flag that a reboot is required, and its alert on this page.
    static void RequireReboot(data::Base &content);

    /// Whether the service speaks HTTP itself, for development. Throws where "service.api" is not set.
    bool UsingInternalServer();
    /// URL of the JSON-RPC endpoint that the status tabs poll.
    std::string StatusUrl();
    std::string GetAppVolumeName() const { return _appVolumeName; }

  private:
    static void _EndSaving(cppcms::base_content &content);
    void _NameWindow(cppcms::base_content &content);

    std::string const _appVolumeName;
};

}  // namespace webconfig::apps

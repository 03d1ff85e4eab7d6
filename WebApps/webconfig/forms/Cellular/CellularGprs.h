#pragma once

#include <string>

#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/widgets/Button.h"
#include "WebApps/webconfig/widgets/Secret.h"

namespace webconfig::forms {

/// The preferred network, and the access to the packet network. The networks that the modem has found
/// are offered from the start.
class CellularGprs : public Base {
  public:
    static constexpr char modeKey[] = "gprs/network/mode";
    static constexpr char operatorsKey[] = "gprs/network/operators";
    static constexpr char refreshKey[] = "gprs/network/refresh";

    static constexpr char automatic[] = "Automatic";
    static constexpr char const *refreshCaption = util::Translatable("Refresh");
    static constexpr char const *cancelCaption = util::Translatable("Refreshing (click to cancel)");

    CellularGprs();

    /// Selects what the stored \a mode says, for example `1,0,"Operator"`; "Automatic" for every other mode
    /// than the manual ones, and where the modem has not found that operator.
    void SelectNetwork(std::string const &mode);
    /// The mode to store for the selected network.
    std::string NetworkMode();

    cppcms::widgets::select preferredNetwork;
    widgets::Button refresh;
    cppcms::widgets::text simType;
    cppcms::widgets::text apn;
    cppcms::widgets::text username;
    widgets::Secret<cppcms::widgets::password> password;
    cppcms::widgets::text dialCommand;
    widgets::Button save;

  private:
    void AddOperators(std::string const &list);
};

}  // namespace webconfig::forms

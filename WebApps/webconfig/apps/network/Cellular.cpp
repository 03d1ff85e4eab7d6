#include "WebApps/webconfig/data/Cellular.h"

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/apps/ParameterWriter.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps {

namespace {

constexpr char const *functionKey = settings::Key("serial/port/gprs/function");
constexpr char dialup[] = "gprs_dialup";
constexpr char noFunction[] = "none";

constexpr char const *radioTechnologyKey = settings::Key("cellular/radio_technology");
constexpr char const *roamingKey = settings::Key("cellular/allow_roaming");
constexpr char const *checkReceivingKey = settings::Key("cellular/check_ppp_receiving");
constexpr char const *useSimPinKey = settings::Key("cellular/use_sim_pin");
constexpr char const *simPinKey = settings::Key("cellular/sim_pin");

constexpr char simTypeKey[] = "gprs/sim_type";
constexpr char const *gprsDialCommandKey = settings::Key("gprs/dial_command");

constexpr char const *carrierKey = settings::Key("cdma/current_carrier");
constexpr char const *cdmaUsernameKey = settings::Key("cdma/username");
constexpr char const *cdmaPasswordKey = settings::Key("cdma/password");
constexpr char const *cdmaDialCommandKey = settings::Key("cdma/dial_command");
constexpr char const *activationCommandKey = settings::Key("cdma/custom/activation_command");
constexpr char const *activationResponseKey = settings::Key("cdma/custom/activation_response");
constexpr char const *forceActivationKey = settings::Key("cdma/force_activation");

/// The index of each tab. CDMA has none of its own and opens the last one.
enum Tab : unsigned { MainTab = 0, GprsTab = 1, StatusTab = 2, CdmaTab = StatusTab };

/// Each kind of SIM card has its access settings in a folder of its own.
struct Sim {
    char const *type;
    char const *name;

    std::string ApnKey() const { return *type ? apn.With(type) : settings::Key("gprs/apn"); }
    std::string UsernameKey() const { return *type ? username.With(type) : settings::Key("gprs/username"); }
    std::string PasswordKey() const { return *type ? password.With(type) : settings::Key("gprs/password"); }

  private:
    static constexpr settings::Pattern apn{"gprs/*/apn"};
    static constexpr settings::Pattern username{"gprs/*/username"};
    static constexpr settings::Pattern password{"gprs/*/password"};
};
constexpr Sim sims[] = {{"kpn", "Varnel KPN"}, {"att", "AT&T"}};
constexpr Sim unknownSim = {"", util::Translatable("Unknown")};

Sim CurrentSim() {
    std::string const type = util::Prm::GetString(simTypeKey);
    for (auto const &sim : sims) {
        if (type == sim.type)
            return sim;
    }
    return unknownSim;
}

void Load(forms::Cellular &form) {
    form.enabled.value(util::Prm::GetString(functionKey) == dialup);
    forms::SelectByValue(form.radioTechnology, util::Prm::GetString(radioTechnologyKey));
    form.allowRoaming.value(util::IsOn(roamingKey));
    form.checkReceiving.value(util::IsOn(checkReceivingKey));
    form.useSimPin.value(util::IsOn(useSimPinKey));
    form.simPin.ShowStored(util::Prm::GetString(simPinKey));
}

void Load(forms::CellularGprs &form, Sim const &sim) {
    form.SelectNetwork(util::Prm::GetString(form.modeKey));
    if (util::IsOn(form.refreshKey))
        form.refresh.value(form.cancelCaption);
    form.simType.value(util::Translate(sim.name));
    form.apn.value(util::Prm::GetString(sim.ApnKey()));
    form.username.value(util::Prm::GetString(sim.UsernameKey()));
    form.password.ShowStored(util::Prm::GetString(sim.PasswordKey()));
    form.dialCommand.value(util::Prm::GetString(gprsDialCommandKey));
}

void Load(forms::CellularCdma &form) {
    forms::SelectByValue(form.carrier, util::Prm::GetString(carrierKey));
    form.username.value(util::Prm::GetString(cdmaUsernameKey));
    form.password.ShowStored(util::Prm::GetString(cdmaPasswordKey));
    form.dialCommand.value(util::Prm::GetString(cdmaDialCommandKey));
    form.activationCommand.value(util::Prm::GetString(activationCommandKey));
    form.activationResponse.value(util::Prm::GetString(activationResponseKey));
    form.forceActivation.value(false);
}

template <typename Input>
ParameterWriter &SetSecret(ParameterWriter &writer, std::string const &key, widgets::Secret<Input> &secret) {
    return secret.KeepsStored() ? writer : writer.Set(key, secret.value());
}

data::Message Store(forms::Cellular &form) {
    ParameterWriter writer;
    writer.Set(functionKey, std::string(form.enabled.value() ? dialup : noFunction))
        .Set(radioTechnologyKey, form.radioTechnology.selected_id())
        .SetSwitch(roamingKey, form.allowRoaming.value())
        .SetSwitch(checkReceivingKey, form.checkReceiving.value())
        .SetSwitch(useSimPinKey, form.useSimPin.value());
    if (form.useSimPin.value())
        SetSecret(writer, simPinKey, form.simPin);
    else
        form.simPin.ShowStored(util::Prm::GetString(simPinKey));
    return writer.Result();
}

data::Message Store(forms::CellularGprs &form, Sim const &sim) {
    ParameterWriter writer;
    writer.Set(sim.ApnKey(), form.apn.value()).Set(sim.UsernameKey(), form.username.value());
    SetSecret(writer, sim.PasswordKey(), form.password)
        .Set(gprsDialCommandKey, form.dialCommand.value())
        .Set(form.modeKey, form.NetworkMode());
    return writer.Result();
}

data::Message Store(forms::CellularCdma &form) {
    ParameterWriter writer;
    writer.Set(carrierKey, form.carrier.selected_id()).Set(cdmaUsernameKey, form.username.value());
    SetSecret(writer, cdmaPasswordKey, form.password)
        .Set(cdmaDialCommandKey, form.dialCommand.value())
        .Set(activationCommandKey, form.activationCommand.value())
        .Set(activationResponseKey, form.activationResponse.value());
    if (form.forceActivation.value())
        writer.SetSwitch(forceActivationKey, true);
    form.forceActivation.value(false);
    return writer.Result();
}

void RefreshNetworks(data::Cellular &content) {
    ParameterWriter writer;
    writer.SetSwitch(content.gprs.refreshKey, true);
    content.message = writer.Result();
    content.selected_tab = writer.Ok() ? StatusTab : GprsTab;  // the status tells how it goes on
    if (writer.Ok()) {
        content.gprs.refresh.value(content.gprs.cancelCaption);
        content.gprs.save.disabled(true);
        content.main.save.disabled(true);
    }
}

void CancelRefresh(data::Cellular &content) {
    content.selected_tab = GprsTab;
    ParameterWriter writer;
    writer.SetSwitch(content.gprs.refreshKey, false);
    content.message = writer.Result({});
    if (writer.Ok())
        content.gprs.refresh.value(content.gprs.refreshCaption);
}

}  // namespace

void Network::Cellular() {
    data::Cellular content;
    Prepare(content);
    content.title = util::Translate("Cellular Port Configuration");

    Sim const sim = CurrentSim();
    Load(content.main);
    Load(content.gprs, sim);
    Load(content.cdma);

    if (HttpPost()) {
        constexpr char save[] = "Save";
        std::string const network = HttpPost("gprsNetwork");
        content.message = data::Message::ValidationError();
        if (HttpPost("cellular") == save) {
            content.selected_tab = MainTab;
            if (ValidateForm(content.main))
                content.message = Store(content.main);
        } else if (HttpPost("gprs") == save) {
            content.selected_tab = GprsTab;
            if (ValidateForm(content.gprs))
                content.message = Store(content.gprs, sim);
        } else if (network == content.gprs.refreshCaption) {
            RefreshNetworks(content);
        } else if (network == content.gprs.cancelCaption) {
            CancelRefresh(content);
        } else if (HttpPost("cdma") == save) {
            content.selected_tab = CdmaTab;
            if (ValidateForm(content.cdma))
                content.message = Store(content.cdma);
        }
    }
    content.gprs.simType.value(util::Translate(sim.name));  // whatever was sent for it
    render("Cellular", content);
}

}  // namespace webconfig::apps

#include "WebApps/webconfig/data/PortForwarding.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "WebApps/webconfig/apps/Network.h"
#include "WebApps/webconfig/settings/Effects.h"
#include "WebApps/webconfig/settings/Rules.h"
#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Translate.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/Network";

constexpr auto integerParameter = static_cast<PRM_PAR_T>(0);

using data::PortForwardingEntry;
using data::PortForwardingKey;
using data::PortForwardingRules;

/// Where the rules of a protocol are in the store: one folder a rule below the parent, named with the
/// source port, with the keys "d_ip" and "d_port".
struct Protocol {
    unsigned id;
    char const *parent;
    char const *badParameter;  // log text
    settings::Pattern address;
    settings::Pattern port;
};
constexpr Protocol protocols[] = {
    {PortForwardingKey::Tcp, "net/portfwd/tcp", "PortForwarding load TCP values: Bad PRM parameter ",
     settings::Pattern("net/portfwd/tcp/*/d_ip"), settings::Pattern("net/portfwd/tcp/*/d_port")},
    {PortForwardingKey::Udp, "net/portfwd/udp", "PortForwarding load UDP values: Bad PRM parameter ",
     settings::Pattern("net/portfwd/udp/*/d_ip"), settings::Pattern("net/portfwd/udp/*/d_port")},
};

struct Parameters {
    std::string address;
    std::string port;
};

Parameters ParametersOf(PortForwardingKey const &key) {
    std::array<char, 16> folder{};
    std::snprintf(folder.data(), folder.size(), "%05u", key.source_port);
    Protocol const &protocol = protocols[key.protocol == PortForwardingKey::Tcp ? 0 : 1];
    return {protocol.address.With(folder.data()), protocol.port.With(folder.data())};
}

/// The rules that the device's NAT script has built in. They are shown only.
PortForwardingRules PresetRules() {
    PortForwardingRules rules;
    if (util::Prm::Exists(settings::vncPortKey)) {
        auto const port = static_cast<unsigned>(util::Prm::GetInt(settings::vncPortKey));
        rules[{PortForwardingKey::Tcp, port}] = {util::Prm::GetString(settings::vncAddressKey), port};
    } else {
        WEBCONFIG_LOG(warning, logTag) << "net/vnc parameters not set";
    }
    for (auto const &preset : settings::presetForwards)
        rules[{PortForwardingKey::Tcp, preset.port}] = {preset.address, preset.toPort};
    return rules;
}

PortForwardingKey KeyOf(forms::PortForwardingRule &form) {
    return {form.protocol.selected_id() == "tcp" ? PortForwardingKey::Tcp : PortForwardingKey::Udp,
            form.sourcePort.value()};
}

PortForwardingEntry EntryOf(forms::PortForwardingRule &form) {
    return {form.destinationIP.value(), form.destinationPort.value()};
}

/// Keeps the values of the open rule, as they are stored, in the hidden fields of its form.
void KeepOldValues(data::PortForwarding &content) {
    int row = 0;
    for (auto const &[key, entry] : content.user_rules) {
        if (content.IsEdited(row++)) {
            content.edit_rule.protocolOld.value(key.ProtocolId());
            content.edit_rule.sourcePortOld.value(std::to_string(key.source_port));
            content.edit_rule.destinationIPOld.value(entry.destination_ip);
            content.edit_rule.destinationPortOld.value(std::to_string(entry.destination_port));
        }
    }
}

/// The page does not tell.
void LogRefusal(PortForwardingKey const &key, char const *done) {
    WEBCONFIG_LOG(error, logTag) << "PortForwarding rule " << key.ProtocolId() << ' ' << key.source_port
                                 << " could not be " << done;
}

}  // namespace

void Network::PortForwarding() {
    struct Action {
        char const *field;
        char const *caption;
        bool (Network::*handler)(data::PortForwarding &);
        bool appliesRules;
    };
    static constexpr Action actions[] = {
        {"add", "Add Row", &Network::_PortForwardingAddHandler, true},
        {"edit", "Edit", &Network::_PortForwardingEditHandler, false},
        {"save", "Save", &Network::_PortForwardingSaveHandler, true},
        {"delete", "Delete", &Network::_PortForwardingDeleteHandler, true},
        {"cancel", "Cancel", &Network::_PortForwardingCancelHandler, false},
    };

    data::PortForwarding content;
    Prepare(content);
    content.title = util::Translate("Port Forwarding");
    content.preset_rules = PresetRules();
    _PortForwardingLoadData(content.user_rules);
    content.general.load(context());

    if (HttpPost()) {
        for (auto const &action : actions) {
            if (HttpPost(action.field) != action.caption)
                continue;
            if ((this->*action.handler)(content) && action.appliesRules)
                util::RunCommand(settings::applyPortForwarding);
            break;
        }
    }
    KeepOldValues(content);
    render("PortForwarding", content);
}

void Network::_PortForwardingLoadData(PortForwardingRules &rules) {
    for (auto const &protocol : protocols) {
        for (auto const &parameter : util::Prm::GetList(protocol.parent)) {
            if (!parameter.starts_with(protocol.parent + std::string("/")))
                continue;
            std::string value;
            PRM_PAR_T type{};
            util::Prm::Get(parameter, value, type);
            if (value.empty() || (type == integerParameter && value == "0")) {
                WEBCONFIG_LOG(error, logTag) << protocol.badParameter << parameter;
                continue;
            }
            std::string const port = parameter.substr(std::strlen(protocol.parent) + 1);
            PortForwardingKey const key{protocol.id, util::LeadingNumber(port)};
            if (parameter.find("/d_ip") != std::string::npos)
                rules[key].destination_ip = value;
            else if (parameter.find("/d_port") != std::string::npos)
                rules[key].destination_port = util::LeadingNumber(value);
        }
    }
}

/// Whether the rule may be stored: there is no other one for its protocol and port.
bool Network::_PortForwardingCheckRule(data::PortForwarding &content, PortForwardingKey const &key) {
    if (content.preset_rules.contains(key)) {
        content.message = data::Message::Error(
            "Port forward rule not added. Preset rule exists with same protocol and source port.");
        return false;
    }
    auto const same = content.user_rules.find(key);
    if (same != content.user_rules.end() &&
        !content.general.IsRow(std::distance(content.user_rules.begin(), same))) {
        content.message = data::Message::Error(
            "Port forward rule not added. User rule exists with same protocol and source port.");
        return false;
    }
    return true;
}

bool Network::_PortForwardingAddHandler(data::PortForwarding &content) {
    forms::PortForwardingAddRule &form = content.add_rule;
    if (!ValidateForm(form)) {
        WEBCONFIG_LOG(error, logTag) << "PortForwarding row add failed validation";
        content.message = data::Message::ValidationError();
        return false;
    }
    PortForwardingKey const key = KeyOf(form);
    if (!_PortForwardingCheckRule(content, key))
        return false;
    content.user_rules[key] = EntryOf(form);
    _PortForwardingPrmWriteEntry(key, content.user_rules[key]);
    form.clear();
    content.message = data::Message::SaveOK();
    return true;
}

bool Network::_PortForwardingSaveHandler(data::PortForwarding &content) {
    forms::PortForwardingEditRule &form = content.edit_rule;
    if (!ValidateForm(form)) {
        WEBCONFIG_LOG(error, logTag) << "PortForwarding row save failed validation";
        content.message = data::Message::ValidationError();
    } else if (PortForwardingKey const key = KeyOf(form); _PortForwardingCheckRule(content, key)) {
        // The rule under the key from before stays: operators make a second rule of one so.
        content.user_rules[key] = EntryOf(form);
        _PortForwardingPrmDeleteEntry(key);
        _PortForwardingPrmWriteEntry(key, content.user_rules[key]);
        content.message = data::Message::SaveOK();
        content.general.editing.value("false");
        return true;
    }
    form.Restore();
    content.general.editing.value("true");
    return false;
}

/// True also where another browser has deleted the row: then its rule is surely not in effect any more.
bool Network::_PortForwardingDeleteHandler(data::PortForwarding &content) {
    content.general.editing.value("false");
    int row = 0;
    for (auto const &[key, entry] : content.user_rules) {
        if (content.general.IsRow(row++)) {
            if (!_PortForwardingIsNamed(key))
                break;
            _PortForwardingPrmDeleteEntry(key);
            content.user_rules.erase(key);
            break;
        }
    }
    return true;
}

/// Whether the row's form, which has its rule in hidden fields, is about this one. A form that comes twice,
/// or from an older table, has another rule in its row by now.
bool Network::_PortForwardingIsNamed(PortForwardingKey const &key) {
    std::string const port = HttpPost("sourcePort");
    return port.empty() ||
           (util::LeadingNumber(port) == key.source_port && HttpPost("protocol") == key.ProtocolId());
}

bool Network::_PortForwardingEditHandler(data::PortForwarding &content) {
    content.general.editing.value("true");
    content.edit_rule.load(context());
    return true;
}

bool Network::_PortForwardingCancelHandler(data::PortForwarding &content) {
    content.general.editing.value("false");
    return true;
}

void Network::_PortForwardingPrmWriteEntry(PortForwardingKey const &key, PortForwardingEntry const &entry) {
    Parameters const parameters = ParametersOf(key);
    bool const address = util::Prm::Set(parameters.address, entry.destination_ip);
    bool const port = util::Prm::Set(parameters.port, std::to_string(entry.destination_port));
    if (!address || !port)
        LogRefusal(key, "stored");
}

void Network::_PortForwardingPrmDeleteEntry(PortForwardingKey const &key) {
    Parameters const parameters = ParametersOf(key);
    for (std::string const &parameter : {parameters.address, parameters.port}) {
        if (util::Prm::Exists(parameter) && !util::Prm::Delete(parameter))
            LogRefusal(key, "deleted");
    }
}

}  // namespace webconfig::apps

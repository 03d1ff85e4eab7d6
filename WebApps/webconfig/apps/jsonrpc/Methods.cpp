#include "WebApps/webconfig/apps/jsonrpc/Methods.h"

#include <sstream>
#include <stdexcept>
#include <string>

#include "WebApps/webconfig/apps/BuildStamp.h"
#include "WebApps/webconfig/history/Trial.h"
#include "WebApps/webconfig/metrics/Sampler.h"

namespace webconfig::apps {

namespace {

constexpr char openRpcVersion[] = "1.3.2";

constexpr char text[] = R"({"type": "string"})";
constexpr char whole[] = R"({"type": "integer"})";
constexpr char yesOrNo[] = R"({"type": "boolean"})";
constexpr char nothing[] = R"({"type": "null"})";

/// An object that may have any members.
constexpr char anObject[] = R"({"type": "object"})";
constexpr char objects[] = R"({"type": "array", "items": {"type": "object"}})";

constexpr Parameter country[] = {{"countryCode", "Two letters", text}};
constexpr Parameter boot[] = {{"boot", "The start that it runs since, as device_describe tells it", text}};
constexpr Parameter keys[] = {
    {"keys", "Keys, folders of keys, or patterns where * is any text without a slash; none for all",
     R"({"type": "array", "items": {"type": "string"}})"}};
constexpr Parameter patch[] = {
    {"patch",
     "Keys with the value that they are to have: a text, a number, true or false for yes or no, null for "
     "none, "
     R"(or {"set": true} for a secret that stays as it is)",
     R"({"type": "object", "additionalProperties": {"anyOf": [{"type": ["string", "integer", "boolean", "null"]},
         {"type": "object", "properties": {"set": {"type": "boolean"}}, "required": ["set"]}]}})"}};
constexpr Parameter page[] = {
    {"before", "Only sets with a lower number; 0 for the newest", whole},
    {"count", "How many at most", R"({"type": "integer", "minimum": 1, "maximum": 100})"}};
constexpr Parameter undo[] = {{"number", "The set to take back", whole},
                              {"confirmed", "Whether later changes of the same settings go, too", yesOrNo}};

constexpr Parameter since[] = {{"since", "Only samples of a later uptime; 0 for all", whole}};

// In the order of their description.
constexpr Method methods[] = {
    {"fw_upgrade_status", "The firmware upgrade tool's line", text, &JsonRpc::FirmwareUpgradeStatus},
    {"general_dynamic_status", "What the device does", "date uptime top processStatus boardTemp",
     &JsonRpc::GeneralStatus},
    {"ethernet1_status", "The LAN's bridge", "br1 brctl", &JsonRpc::Ethernet1Status},
    {"cellular_status", "The modem; HTTP status 404 where its daemon cannot be asked at all",
     "gprs_network_refresh gprs_dialup_enabled have_gprs_stats have_serial_stats", &JsonRpc::CellularStatus},
    {"openvpn_status", "The VPN",
     "connectionStatus isConnected currentStateTimeString configurationFile caCertificate clientCertificate "
     "clientKey organization organizationalUnit logOutput",
     &JsonRpc::OpenvpnStatus},
    {"port_forwarding_status", "The packet filter's tables", "filtering nat", &JsonRpc::PortForwardingStatus},
    {"orvane_status", "The link to the site server", "isConnected serverAddress", &JsonRpc::OrvaneStatus},
    {"tail_syslog", "The last lines of the system log", "tail", &JsonRpc::TailSyslog},
    {"ntpd_status", "The time service", "running", &JsonRpc::NtpServerStatus},
    {"dns_server_status", "The name servers in use", "currentConf", &JsonRpc::DnsServerStatus},
    {"reload", "Rebuilds the service; there is no answer", nothing, &JsonRpc::Reload},
    {"wifi_ap_status", "The access point; of one that is off no more than that", "ap0_enabled",
     &JsonRpc::wifiApStatus},
    {"wifi_client_status", "The Wi-Fi client; of one that is off no more than that", "client0_enabled",
     &JsonRpc::wifiClientStatus},
    {"wifi_get_channels", "The Wi-Fi channels of a country; none where it has none", "countryCode",
     &JsonRpc::wifiGetChannels, country},
    {"prepare_fw_upgrade", "Suspends the deployment daemon; the command's status", whole,
     &JsonRpc::PrepareFWUpgrade},

    {"metrics", "What the device does, and samples of the last day", "boot time uptime interval now samples",
     &JsonRpc::Metrics, since, Feature::Metrics},

    {"trial_status",
     "What is on trial, and for how long",
     "state seconds",
     &JsonRpc::TrialStatus,
     {},
     Feature::Trial},
    {"trial_keep",
     "Keeps what is on trial; false where nothing is",
     yesOrNo,
     &JsonRpc::TrialKeep,
     {},
     Feature::Trial},
    {"trial_take_back",
     "Takes back what is on trial; false where nothing is",
     yesOrNo,
     &JsonRpc::TrialTakeBack,
     {},
     Feature::Trial},

    {"device_describe",
     "Which device it is",
     "model firmware serial name boot restart",
     &JsonRpc::DeviceDescribe,
     {},
     Feature::Machines},
    {"device_restart", "Restarts the device; false where it has been restarted since", yesOrNo,
     &JsonRpc::DeviceRestart, boot, Feature::Machines},
    {"settings_describe",
     "The table of settings",
     objects,
     &JsonRpc::SettingsDescribe,
     {},
     Feature::Machines},
    {"settings_get", "The values of settings; of a secret only that it is set", anObject,
     &JsonRpc::SettingsGet, keys, Feature::Machines},
    {"settings_diff", "What a patch would change, and what of it would be refused", "changes refused",
     &JsonRpc::SettingsDiff, patch, Feature::Machines},
    {"settings_set", "Makes the changes of a patch, all or none, and puts them into effect",
     "changed set in_effect restart trial", &JsonRpc::SettingsSet, patch, Feature::Machines},
    {"history_list", "Change sets, newest first", objects, &JsonRpc::HistoryList, page, Feature::Machines},
    {"history_undo", "Takes a change set back", "changed set in_effect restart trial", &JsonRpc::HistoryUndo,
     undo, Feature::Machines},
    {"rpc.discover", "This description", "openrpc info methods", &JsonRpc::Discover, {}, Feature::Machines},
};

cppcms::json::value Parsed(std::string const &schema) {
    std::istringstream in(schema);
    cppcms::json::value value;
    if (!value.load(in, true))
        throw std::logic_error("No JSON: " + schema);
    return value;
}

cppcms::json::value ResultSchema(std::string const &result) {
    if (result.starts_with('{'))
        return Parsed(result);
    cppcms::json::value schema = Parsed(anObject);
    schema["required"] = cppcms::json::array();
    std::istringstream members(result);
    for (std::string name; members >> name;)
        schema["required"].array().emplace_back(name);
    return schema;
}

cppcms::json::value Described(Method const &method) {
    cppcms::json::value described;
    described["name"] = method.name;
    described["summary"] = method.summary;
    described["paramStructure"] = "by-position";
    described["params"] = cppcms::json::array();
    for (auto const &parameter : method.parameters) {
        cppcms::json::value one;
        one["name"] = parameter.name;
        one["summary"] = parameter.summary;
        one["required"] = true;
        one["schema"] = Parsed(parameter.schema);
        described["params"].array().push_back(one);
    }
    described["result"]["name"] = "result";
    described["result"]["schema"] = ResultSchema(method.result);
    return described;
}

}  // namespace

std::span<Method const> Methods() {
    return methods;
}

bool IsOffered(Feature feature, bool machines) {
    switch (feature) {
        case Feature::Metrics:
            return metrics::IsSampling();
        case Feature::Trial:
            return history::TheTrialFile();
        case Feature::Machines:
            return machines;
        case Feature::Always:
            break;
    }
    return true;
}

cppcms::json::value MethodsDocument(bool machines) {
    cppcms::json::value document;
    document["openrpc"] = openRpcVersion;
    document["info"]["title"] = "Device configuration";
    document["info"]["version"] = buildStamp;
    document["info"]["description"] = "JSON-RPC 1.0 over HTTP POST, parameters by position";
    document["methods"] = cppcms::json::array();
    for (auto const &method : methods) {
        if (IsOffered(method.feature, machines))
            document["methods"].array().push_back(Described(method));
    }
    return document;
}

}  // namespace webconfig::apps

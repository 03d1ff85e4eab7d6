#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/apps/jsonrpc/CellularTexts.h"
#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"
#include "WebApps/webconfig/apps/jsonrpc/Duration.h"
#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/DaemonQuery.h"
#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Switch.h"
#include "seriald_client/PortStatistics.h"
#include "seriald_client/SerialPRM.h"

namespace webconfig::apps {

namespace {

constexpr char interfaceAddress[] =
    "/sbin/ifconfig ppp0 | head -n 2 | tail -n 1 | awk '{print $2}' | awk -F ':' '{print $2}'";

/// The search for networks, which others run. The answers after its end, all callers' together, tell that
/// it is complete.
char const *NetworkRefreshState() {
    constexpr int completePolls = 6;
    static int countdown = 0;
    if (util::IsOn("gprs/network/refresh")) {
        countdown = completePolls;
        return "progress";
    }
    if (countdown < 1)
        return "none";
    --countdown;
    return "complete";
}

void AddModem(cppcms::json::value &status, cVexaMsgGPRSStats const &modem) {
    status["modem_type"] = std::string(modem.modemType);
    status["modem_firmware_version"] = std::string(modem.modemFirmwareVersion);
    status["modem_serial_number"] = std::string(modem.modemSerialNumber);
    cellular::Numbers const numbers = cellular::SplitNumbers(modem.mobileNumber);
    status["mobile_number"] = numbers.mobile;
    if (numbers.hasAssembly)
        status["assembly_number"] = numbers.assembly;
    status["sim_status"] = cellular::SimStatusText(modem.simStatus);
    status["sim_ccid"] = cellular::SimCcidText(modem.simCcid, modem.simStatus);
    status["module_temp_degrees"] = cellular::TemperatureText(modem.moduleTemperature);
    status["module_temp_indication"] = cellular::TemperatureIndicationText(modem.temperatureIndication);
}

void AddRadio(cppcms::json::value &status, cVexaMsgGPRSStats const &modem) {
    status["signal_strength"] = cellular::SignalStrengthText(modem.signalQuality);
    status["bit_error_rate"] = cellular::BitErrorRateText(modem.networkKind, modem.bitErrorRate);
    status["connection_type"] =
        cellular::ConnectionTypeText(modem.networkKind, modem.accessTechnology, modem.frequency);
    status["network"] = std::string(modem.network);
    status["forced_automatic"] = modem.forcedAutomatic != 0;
}

void AddConnection(cppcms::json::value &status, cVexaMsgGPRSStats const &modem) {
    status["apn_in_use"] = std::string(modem.apn);
    status["connection_duration"] = DurationText(modem.secondsConnected);
    status["ppp_tx_packets_current"] = modem.pppTxPackets;
    status["ppp_rx_packets_current"] = modem.pppRxPackets;
    status["ppp_tx_bytes_current"] = modem.pppTxBytes;
    status["ppp_rx_bytes_current"] = modem.pppRxBytes;
    status["ppp_tx_bytes_total"] = modem.pppTxBytesTotal;
    status["ppp_rx_bytes_total"] = modem.pppRxBytesTotal;
    status["ppp_ip_address"] = util::Trim(util::ShellCommand(interfaceAddress, maxOutput));
}

/// The traffic of the serial port that the modem is at.
void AddSerialPort(cppcms::json::value &status) {
    auto const statistics = SerialdMsg::QueryStatistics();
    auto const *const port = statistics ? statistics->FindPort(cSerialPRM::functionGprsDialup) : nullptr;
    status["have_serial_stats"] = port != nullptr;
    if (!port)
        return;
    status["port_tx_packets_total"] = port->transmittedPackets;
    status["port_rx_packets_total"] = port->receivedPackets;
    status["serial_message"] = std::string(port->message);
}

}  // namespace

cppcms::json::value JsonRpc::CellularStatus() {
    cppcms::json::value status;
    status["gprs_network_refresh"] = NetworkRefreshState();
    bool const isDialup = util::Prm::GetString("serial/port/gprs/function") == "gprs_dialup";
    status["gprs_dialup_enabled"] = isDialup;
    status["have_gprs_stats"] = false;
    if (isDialup) {
        auto const [canReceive, modem] = util::AskSeriald();
        if (!canReceive) {
            return {};  // the page sees a failed poll
        }
        status["have_gprs_stats"] = modem != nullptr;
        if (modem) {
            AddModem(status, *modem);
            AddRadio(status, *modem);
            AddConnection(status, *modem);
        }
    }
    AddSerialPort(status);
    return status;
}

}  // namespace webconfig::apps

#include "device/daemons/MessageServer.h"
#include "device/daemons/SerialServer.h"

namespace {

std::unique_ptr<cVexaMsg> MakeAnswer(daemons::Report &report) {
    auto stats = std::make_unique<cVexaMsgGPRSStats>();
    report.Get("modem_type", stats->modemType);
    report.Get("modem_firmware_version", stats->modemFirmwareVersion);
    report.Get("modem_serial_number", stats->modemSerialNumber);
    report.Get("mobile_number", stats->mobileNumber);
    report.Get("sim_ccid", stats->simCcid);
    report.Get("network_kind", stats->networkKind);
    report.Get("signal_quality", stats->signalQuality);
    report.Get("bit_error_rate", stats->bitErrorRate);
    report.Get("network", stats->network);
    report.Get("forced_automatic", stats->forcedAutomatic);
    report.Get("access_technology", stats->accessTechnology);
    report.Get("frequency", stats->frequency);
    report.Get("sim_status", stats->simStatus);
    report.Get("apn", stats->apn);
    report.Get("seconds_connected", stats->secondsConnected);
    report.Get("module_temperature", stats->moduleTemperature);
    report.Get("temperature_indication", stats->temperatureIndication);
    report.Get("ppp_tx_packets", stats->pppTxPackets);
    report.Get("ppp_rx_packets", stats->pppRxPackets);
    report.Get("ppp_tx_bytes", stats->pppTxBytes);
    report.Get("ppp_rx_bytes", stats->pppRxBytes);
    report.Get("ppp_tx_bytes_total", stats->pppTxBytesTotal);
    report.Get("ppp_rx_bytes_total", stats->pppRxBytesTotal);
    return stats;
}

}  // namespace

int main(int argc, char **argv) {
    std::string const file = daemons::ReportFile("seriald", argc, argv);
    daemons::MessageServer modem("seriald", file, cVexaMsgRequestGPRSStats::messageType, MakeAnswer);
    daemons::SerialServer ports(file + ".ports");
    daemons::Serve({&modem, &ports});
}

#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

std::string Status(std::string const &method, std::string const &parameters = "[]") {
    Answer const answer = Browser(device::address).Call(method, parameters);
    EXPECT_NE(answer.result, "") << method << ": " << answer.body;
    return answer.result;
}

void ExpectParts(std::string const &status, Strings const &parts) {
    for (std::string const &part : parts)
        EXPECT_NE(status.find(part), std::string::npos) << part << "\nis not in " << status;
}

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

constexpr char unknownLink[] = R"({"isConnected":"Unknown","serverAddress":"Unknown"})";
constexpr int port = 9105;
constexpr char address[] = "http://127.0.0.1:9105";
constexpr char dialup[] = "serial/port/gprs/function";

class StatusMethodsTest : public testing::Test {
  protected:
    device::KeptStore const store;
};

}  // namespace

TEST_F(StatusMethodsTest, OutputsOfNetworkTools) {
    ExpectParts(Status("ethernet1_status"),
                {R"("br1":"br1       Link encap:Ethernet)", R"("brctl":"bridge name\tbridge id)"});
    ExpectParts(Status("port_forwarding_status"),
                {R"("filtering":"Chain INPUT)", "Chain FORWARD", R"("nat":"Chain PREROUTING)"});
}

TEST_F(StatusMethodsTest, OutputsAreCutAndAlwaysText) {
    struct {
        std::string content;
        std::string status;
    } const cases[] = {
        {"nameserver 10.0.0.1\n", R"({"currentConf":"nameserver 10.0.0.1\n"})"},
        {std::string(4096, 'x'), R"({"currentConf":")" + std::string(4096, 'x') + "\"}"},
        {std::string(4097, 'x'), R"({"currentConf":")" + std::string(4093, 'x') + "...\"}"},
        {"caf\xE9 \x1B[2J\xC2\x9B"
         "2J é<b>\n",
         "{\"currentConf\":\"caf\uFFFD \uFFFD[2J\uFFFD\uFFFD2J é<b>\\n\"}"},
    };
    for (auto const &[content, status] : cases) {
        device::ReplacedFile const file("/etc/resolv.conf", content);
        EXPECT_EQ(Status("dns_server_status"), status);
    }
    device::ReplacedFile const none("/etc/resolv.conf");
    ExpectParts(Status("dns_server_status"), {"No such file or directory"});
}

TEST_F(StatusMethodsTest, TailOfTheSystemLogInUse) {
    store.Set({{"syslogd/persistent", "no"}});
    device::Log const volatileLog;
    device::Shell("logger -t test 'the volatile log'");
    EXPECT_TRUE(volatileLog.Has("the volatile log"));
    ExpectParts(Status("tail_syslog"), {"test: the volatile log"});

    std::string const line = std::string(299, 'x') + '\n';
    std::string lines = "the line before the last thirty\n";
    for (int i = 0; i < 30; ++i)
        lines += line;
    device::ReplacedFile const log("/home/root/log/messages", lines);
    store.Set({{"syslogd/persistent", "yes"}});
    std::string const tail = Status("tail_syslog");
    EXPECT_EQ(tail.find("before"), std::string::npos);
    // 26 whole lines, and of the next what fits into 8096 bytes.
    EXPECT_TRUE(tail.ends_with("x\\n" + std::string(8096 - 26 * 300 - 3, 'x') + "...\"}")) << tail;
    EXPECT_EQ(tail.size(), std::string_view(R"({"tail":""})").size() + 8096 + 26);
}

TEST_F(StatusMethodsTest, WifiInterfacesTellMoreWhenTheyAreOn) {
    for (char const *const off : {"no", "", "YES"}) {
        store.Set({{"net/wifi/ap/enabled", off}, {"net/wifi/client/enabled", off}});
        EXPECT_EQ(Status("wifi_ap_status"), R"({"ap0_enabled":false})");
        EXPECT_EQ(Status("wifi_client_status"), R"({"client0_enabled":false})");
    }
    store.Set({{"net/wifi/ap/enabled", "yes"}, {"net/wifi/client/enabled", "yes"}});
    // A client chooses its name itself.
    device::ReplacedFile const leases("/tmp/dhcp.leases", "1 aa:bb 192.168.2.7 <b>\"\x1B[2J\xFF\\\n");
    device::RecordingProgram const iw("/usr/sbin/iw",
                                      "echo \"$*\"; echo 'signal: -50'; echo 'tx bitrate: 6'");
    device::Log const log;
    device::Shell("for i in 1 2 3 4 5 6 7 8 9; do logger -t test \"a WIFI line $i\"; done");
    EXPECT_TRUE(log.Has("WIFI line 9"));

    std::string const accessPoint = Status("wifi_ap_status");
    ExpectParts(accessPoint, {R"("ap0_enabled":true)", R"("ap0_status":"dev ap0 info\nsignal: -50\n)",
                              R"("connected_clients":"dev ap0 station dump\n)",
                              "\"clients_dhcp_lease\":\"1 aa:bb 192.168.2.7 <b>\\\"\uFFFD[2J\uFFFD\\\\\\n\"",
                              "a WIFI line 2\\n", "a WIFI line 9\\n\""});
    EXPECT_EQ(accessPoint.find("a WIFI line 1"), std::string::npos) << "only the last eight";
    ExpectParts(
        Status("wifi_client_status"),
        {R"("client0_enabled":true)",
         R"("client0_status":"dev client0 info\nsignal: -50\ntx bitrate: 6\nsignal: -50\ntx bitrate: 6\n")",
         R"("client0_ifconfig_status":)", R"("Routing":"Kernel IP routing table\n)", "a WIFI line 9\\n"});
}

TEST_F(StatusMethodsTest, ChannelsOfACountry) {
    std::string const country = device::Shell(
        "python3 -c \"import json; print(*json.load(open('/etc/countryChannelsLaird'))['$(prm get "
        "net/wifi/region_code)'])\"");
    std::string const code = country.substr(0, country.find_first_of(" \n"));
    ExpectParts(Status("wifi_get_channels", "[\"" + code + "\"]"),
                {R"("channels":["1:2412","2:2417",)", R"("36:5180")", "\"countryCode\":\"" + code + '"'});
    EXPECT_EQ(Status("wifi_get_channels", R"(["no such country"])"), R"({"countryCode":"no such country"})");
    EXPECT_EQ(Status("wifi_get_channels", R"([""])"), R"({"countryCode":""})");
}

TEST_F(StatusMethodsTest, ChronydWhereThereIsChronyc) {
    ExpectParts(Status("ntpd_status"),
                {R"("isChronyd":true)", R"("running":true)", R"("tracking":"Reference ID)",
                 R"("rawOutput":")", R"("clients":"Hostname)"});
    device::RecordingProgram const chronyc("/usr/bin/chronyc", "echo '506 Cannot talk to daemon'");
    EXPECT_EQ(Status("ntpd_status"), R"({"isChronyd":true,"running":false})");
}

TEST_F(StatusMethodsTest, NtpdWhereThereIsNone) {
    device::ReplacedFile const noChronyc("/usr/bin/chronyc");
    struct {
        char const *script;
        char const *status;
    } const cases[] = {
        {"echo 'ntpq: read: Connection refused' >&2",
         R"({"gpsSync":false,"hasGps":false,"ppsSync":false,"rawOutput":"ntpq: read: Connection refused\n","running":false,"syncTo":""})"},
        {"echo '*127.127.28.0 .GPS. 0 l'; echo 'o127.127.22.0 .PPS. 0 l'",
         R"({"gpsSync":true,"hasGps":true,"ppsSync":true,"rawOutput":"*127.127.28.0 .GPS. 0 l\no127.127.22.0 .PPS. 0 l\n","running":true,"syncTo":"GPS with PPS"})"},
        {"echo \"*192.168.1.10 10.0.0.1 $*\"",
         R"({"gpsSync":false,"hasGps":false,"ppsSync":false,"rawOutput":"*192.168.1.10 10.0.0.1 -pn\n","running":true,"syncTo":"192.168.1.10"})"},
    };
    for (auto const &[script, status] : cases) {
        device::RecordingProgram const ntpq("/usr/bin/ntpq", script);
        EXPECT_EQ(Status("ntpd_status"), status);
    }
}

TEST_F(StatusMethodsTest, SiteServerLink) {
    struct {
        char const *report;
        char const *status;
        double longest;
    } const cases[] = {
        {"connected = 1\nserver_address = 10.99.0.1\n", R"({"isConnected":true,"serverAddress":"10.99.0.1"})",
         0.9},
        {"connected = 0\n", R"({"isConnected":false,"serverAddress":"0.0.0.0"})", 0.9},
        {"delay = 300\nserver_address = 1.2.3.4\n", R"({"isConnected":false,"serverAddress":"1.2.3.4"})",
         0.9},
        {"answer = garbage\n", R"({"isConnected":true,"serverAddress":"255.255.255.255"})", 0.9},
        {"answer = silent\n", unknownLink, 1.9},
        {"delay = 1300\nconnected = 1\n", unknownLink, 1.9},
    };
    for (auto const &[report, status, longest] : cases) {
        device::ReplacedFile const file("/etc/daemons/statusd", report);
        auto const start = std::chrono::steady_clock::now();
        EXPECT_EQ(Status("orvane_status"), status) << report;
        EXPECT_LT(Seconds(start), longest) << report;
    }
    device::Shell("sleep 0.5");  // the late answer goes to nobody
    ExpectParts(Status("orvane_status"), {R"("isConnected":true)"});

    device::Log const log;
    device::Shell("supvis --suspend statusd");
    EXPECT_EQ(Status("orvane_status"), unknownLink);
    EXPECT_TRUE(log.Has(R"(vexaClient.Send("statusd", cVexaMsgRequestServerStats) failed)"));
    device::Shell("supvis --resume statusd; sleep 0.5");
    ExpectParts(Status("orvane_status"), {R"("isConnected":true)"});
}

// A poll of a silent daemon waits a second: the next answer is there after two, whoever else asks what.
TEST_F(StatusMethodsTest, ManyPollersOfSilentDaemonsWaitTogether) {
    device::ReplacedFile const link("/etc/daemons/statusd", "answer = silent\n");
    device::ReplacedFile const tunnel("/etc/daemons/openvpnd", "answer = silent\n");
    device::ReplacedFile const modem("/etc/daemons/seriald", "answer = silent\n");
    store.Set({{dialup, "gprs_dialup"}});
    struct {
        char const *method;
        char const *part;
    } const polls[] = {{"orvane_status", R"("serverAddress":"Unknown")"},
                       {"openvpn_status", R"("connectionStatus":"Unknown")"},
                       {"cellular_status", R"("have_gprs_stats":false)"}};
    auto const start = std::chrono::steady_clock::now();
    std::vector<std::thread> pollers;
    for (int i = 0; i < 4; ++i) {
        for (auto const &[method, part] : polls)
            pollers.emplace_back([&] { ExpectParts(Status(method), {part}); });
    }
    for (auto &poller : pollers)
        poller.join();
    EXPECT_LT(Seconds(start), 3.5);
}

TEST_F(StatusMethodsTest, OpenVpnConnection) {
    struct {
        char const *report;
        Strings parts;
    } const cases[] = {
        {"connected = 1\nseconds_in_state = 301\nstatus = Connected <b>\n",
         {R"("connectionStatus":"Connected <b>")", R"("isConnected":true)",
          R"("currentStateTimeString":"5 minutes")"}},
        {"answer = garbage\n", {R"("isConnected":true)", "\"connectionStatus\":\"\uFFFD\uFFFD"}},
        {"answer = silent\n",
         {R"("connectionStatus":"Unknown")", R"("isConnected":"Unknown")",
          R"("currentStateTimeString":"Unknown")", R"("caCertificate":)", R"("logOutput":)"}},
    };
    for (auto const &[report, parts] : cases) {
        device::ReplacedFile const file("/etc/daemons/openvpnd", report);
        ExpectParts(Status("openvpn_status"), parts);
    }
}

TEST_F(StatusMethodsTest, OpenVpnConfiguration) {
    constexpr char certificate[] = "/tmp/status_methods.pem";
    constexpr char path[] = "/tmp/status_methods.ovpn";
    device::Shell(std::string("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout "
                              "/dev/null -subj '/O=Field, Ltd/CN=vpn-1.example' -out ") +
                  certificate + " 2>&1");
    device::ReplacedFile const configuration(
        path, "client\n<cert>\n" + device::ReadFile(certificate) + "</cert>\n");
    std::filesystem::remove(certificate);
    Strings const names = {R"("server":"vpn")", R"("client":"vpn-1.example")",
                           R"("organization":"Field","organizationalUnit":"")"};
    Settings settings = {{"net/openvpn/client_ovpn", none},
                         {"net/openvpn/ca_crt", none},
                         {"net/openvpn/client_crt", none},
                         {"net/openvpn/client_key", none}};
    device::ReplacedFile const noLog("/tmp/openvpn.log");
    device::ReplacedFile const noDefault("/etc/openvpn/client.conf");
    store.Set(settings);
    ExpectParts(Status("openvpn_status"),
                {R"("configurationFile":"Missing")", R"("caCertificate":"Missing","client":"",)",
                 R"("clientCertificate":"Missing","clientKey":"Missing")", R"("server":"")",
                 R"("organization":"","organizationalUnit":"")", R"("logOutput":"")"});

    // The uploaded configuration is there; then only its name is left.
    settings["net/openvpn/client_ovpn"] = path;
    settings["net/openvpn/ca_crt"] = "/tmp/none.crt";
    store.Set(settings);
    device::ReplacedFile const log("/tmp/openvpn.log", "one\ntwo\n");
    std::string const embedded = std::string("\"Embedded in ") + path + '"';
    std::string const uploaded = Status("openvpn_status");
    ExpectParts(uploaded, names);
    ExpectParts(uploaded, {std::string("\"configurationFile\":\"") + path + '"',
                           "\"caCertificate\":" + embedded, "\"clientCertificate\":" + embedded,
                           "\"clientKey\":" + embedded, R"("logOutput":"one\ntwo\n")"});
    settings["net/openvpn/client_ovpn"] = "/tmp/gone.ovpn";
    settings["net/openvpn/client_key"] = "/tmp/some.key";
    store.Set(settings);
    device::ReplacedFile const standard("/etc/openvpn/client.conf", "");
    ExpectParts(Status("openvpn_status"),
                {R"("configurationFile":"/etc/openvpn/client.conf")", R"("caCertificate":"/tmp/none.crt")",
                 R"("clientCertificate":"Missing","clientKey":"/tmp/some.key")", R"("server":"")"});
    settings["net/openvpn/ca_crt"] = path;
    store.Set(settings);
    ExpectParts(Status("openvpn_status"), names);

    // The poll asks each second; the log tells a state when it begins.
    std::string const changing = "/tmp/status_methods.changing";
    device::Log const polls;
    auto const poll = [&](std::string const &file) {
        settings["net/openvpn/ca_crt"] = file;
        store.Set(settings);
        for (int times = 0; times < 3; ++times)
            Status("openvpn_status");
    };
    poll(changing);
    device::ReplacedFile const noCertificate(changing, "client\n");
    poll(changing);
    poll(path);
    poll(changing);
    device::Shell("logger the end of the polls");
    EXPECT_TRUE(polls.Has("the end of the polls"));
    std::string const told = polls.Text();
    EXPECT_EQ(device::Count(told, "GetCertificateDetils: Unable to load certificate from disk"), 1U) << told;
    EXPECT_EQ(device::Count(told, "GetCertificateDetils: Certificate format error"), 2U) << told;
}

TEST_F(StatusMethodsTest, CellularModem) {
    store.Set({{dialup, "gprs_dialup"}});
    device::ReplacedFile const modem("/etc/daemons/seriald",
                                     "mobile_number = 123^A^1\nsim_status = 10\nsim_ccid = 8949\n"
                                     "network_kind = 3\naccess_technology = 2\nfrequency = 850\n"
                                     "signal_quality = -75\nbit_error_rate = 7\nforced_automatic = 2\n"
                                     "seconds_connected = 18001\nmodule_temperature = -2147483648\n"
                                     "temperature_indication = -1\nppp_rx_bytes_total = 4294967295\n");
    ExpectParts(
        Status("cellular_status"),
        {R"("have_gprs_stats":true)", R"("mobile_number":"123")", R"("assembly_number":"A^1")",
         R"("sim_status":"Unknown")", R"("sim_ccid":"Unknown")",
         "\"connection_type\":\"CDMA - EVDO (≈850MHz)\"", R"("signal_strength":"-75 dBm")",
         R"("bit_error_rate":"> 8.0%")", R"("forced_automatic":true)", R"("connection_duration":"5 hours")",
         R"("module_temp_degrees":"Unknown")", R"("module_temp_indication":"Below low temp alert limit")",
         R"("ppp_rx_bytes_total":4294967295)"});
    device::WriteFile("/etc/daemons/seriald", "answer = garbage\n");
    std::string const garbage = Status("cellular_status");
    ExpectParts(garbage, {R"("have_gprs_stats":true)", R"("sim_status":"Unknown")", "\"network\":\"\uFFFD"});
    device::WriteFile("/etc/daemons/seriald", "mobile_number = 123\nanswer = normal\n");
    EXPECT_EQ(Status("cellular_status").find("assembly_number"), std::string::npos);
    device::WriteFile("/etc/daemons/seriald", "answer = silent\n");
    ExpectParts(Status("cellular_status"), {R"("gprs_dialup_enabled":true)", R"("have_gprs_stats":false)",
                                            R"("have_serial_stats":true)"});
    // Nobody asks for what is not there, but the ports are asked in any case.
    store.Set({{dialup, "none"}});
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(
        Status("cellular_status"),
        R"({"gprs_dialup_enabled":false,"gprs_network_refresh":"none","have_gprs_stats":false,"have_serial_stats":true,"port_rx_packets_total":3400,"port_tx_packets_total":1200,"serial_message":"Connected"})");
    EXPECT_LT(Seconds(start), 0.9);
}

TEST_F(StatusMethodsTest, CellularSerialPort) {
    store.Set({{dialup, "none"}});
    constexpr char none[] =
        R"({"gprs_dialup_enabled":false,"gprs_network_refresh":"none","have_gprs_stats":false,"have_serial_stats":false})";
    for (char const *const ports :
         {"ports = 1\nport1.function = 2\n", "ports = 1\nport1.function = 2\nport2.function = 4\n",
          "answer = silent\n", "answer = short\nports = 1\nport1.function = 4\n",
          "answer = long\nports = 1\nport1.function = 4\n"}) {
        device::ReplacedFile const file("/etc/daemons/seriald.ports", ports);
        auto const start = std::chrono::steady_clock::now();
        EXPECT_EQ(Status("cellular_status"), none) << ports;
        EXPECT_LT(Seconds(start), 0.9) << ports;
    }
}

TEST_F(StatusMethodsTest, SixPollsTellThatTheNetworkSearchIsComplete) {
    Settings searching = {{dialup, "none"}, {"gprs/network/refresh", "yes"}};
    store.Set(searching);
    for (int i = 0; i < 3; ++i)
        ExpectParts(Status("cellular_status"), {R"("gprs_network_refresh":"progress")"});
    searching["gprs/network/refresh"] = "no";
    store.Set(searching);
    for (int i = 0; i < 6; ++i)
        ExpectParts(Status("cellular_status"), {R"("gprs_network_refresh":"complete")"});
    for (int i = 0; i < 2; ++i)
        ExpectParts(Status("cellular_status"), {R"("gprs_network_refresh":"none")"});
}

TEST_F(StatusMethodsTest, CellularIsNotFoundWhereNobodyCanBeAsked) {
    store.Set({{dialup, "gprs_dialup"}});
    device::Process process(device::Configuration(port));
    device::Up(address);
    std::string const descriptors = "/proc/" + std::to_string(process.Pid()) + "/fd/";
    Answer answer;
    // Descriptors of connections before this one may just be going.
    for (int tries = 20; answer.status != 404 && tries > 0; --tries) {
        rlim_t next = 0;
        while (std::filesystem::exists(descriptors + std::to_string(next)))
            ++next;
        rlimit const one{next + 1, next + 1};  // that of the connection
        ASSERT_EQ(prlimit(process.Pid(), RLIMIT_NOFILE, &one, nullptr), 0);
        answer = Browser(address).Call("cellular_status");
    }
    EXPECT_EQ(answer.status, 404) << answer.body;
    EXPECT_TRUE(process.WaitForLog("vexaClient.GetFd() failed"));
}

}  // namespace pages

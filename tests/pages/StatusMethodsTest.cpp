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
    EXPECT_EQ(answer.contentType, "application/json; charset=utf-8");
    return answer.result;
}

void ExpectParts(std::string const &status, Strings const &parts) {
    for (std::string const &part : parts)
        EXPECT_NE(status.find(part), std::string::npos) << part << "\nis not in " << status;
}

double Seconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

constexpr char firmwareStatus[] = "/tmp/fwtool_status.txt";
constexpr char firmwareLock[] = "/tmp/fwtool_6v1Znb.lock";
constexpr char failed[] = R"("{ 'state' : 'failed' }")";
constexpr char dialup[] = "serial/port/gprs/function";
constexpr char statusd[] = "/etc/daemons/statusd";
constexpr char openvpnd[] = "/etc/daemons/openvpnd";
constexpr char seriald[] = "/etc/daemons/seriald";
constexpr char serialPorts[] = "/etc/daemons/seriald.ports";
constexpr char resolver[] = "/etc/resolv.conf";
constexpr char unknownLink[] = R"({"isConnected":"Unknown","serverAddress":"Unknown"})";
constexpr char noSerialPort[] =
    R"({"gprs_dialup_enabled":false,"gprs_network_refresh":"none","have_gprs_stats":false,"have_serial_stats":false})";

class StatusMethodsTest : public testing::Test {
  protected:
    device::KeptStore const store;
};

}  // namespace

TEST_F(StatusMethodsTest, TellWhatToolsPrint) {
    std::pair<char const *, Strings> const cases[] = {
        {"ethernet1_status",
         {R"("br1":"br1       Link encap:Ethernet)", R"("brctl":"bridge name\tbridge id)"}},
        {"port_forwarding_status", {R"("filtering":"Chain INPUT)", "Chain FORWARD", R"("nat":"Chain PRE)"}},
        {"general_dynamic_status",
         {R"("boardTemp":"unknown")", R"("date":")", R"("uptime":")", "load average", R"("top":"top - )",
          R"("processStatus":"UID )"}},
        {"ntpd_status",
         {R"("isChronyd":true)", R"("running":true)", R"("tracking":"Reference ID)", R"("rawOutput":")",
          R"("clients":"Hostname)"}},
    };
    for (auto const &[method, parts] : cases)
        ExpectParts(Status(method), parts);
}

/// What the device's programs and daemons say, and the whole result of the method.
TEST_F(StatusMethodsTest, TellWhatTheDeviceSays) {
    struct {
        char const *method;
        char const *file;
        std::string content;
        std::string result;
        double longest = 0.9;  // a daemon has a second
    } const cases[] = {
        {"dns_server_status", resolver, std::string(4096, 'x'),
         R"({"currentConf":")" + std::string(4096, 'x') + "\"}"},
        {"dns_server_status", resolver, std::string(4097, 'x'),
         R"({"currentConf":")" + std::string(4093, 'x') + "...\"}"},
        {"dns_server_status", resolver, "caf\xE9 \x1B[2J é<b>\n",
         "{\"currentConf\":\"caf\uFFFD \uFFFD[2J é<b>\\n\"}"},
        {"orvane_status", statusd, "connected = 1\nserver_address = 10.99.0.1\n",
         R"({"isConnected":true,"serverAddress":"10.99.0.1"})"},
        {"orvane_status", statusd, "delay = 300\nserver_address = 1.2.3.4\n",
         R"({"isConnected":false,"serverAddress":"1.2.3.4"})"},
        {"orvane_status", statusd, "answer = garbage\n",
         R"({"isConnected":true,"serverAddress":"255.255.255.255"})"},
        {"orvane_status", statusd, "answer = silent\n", unknownLink, 1.9},
        {"orvane_status", statusd, "delay = 1300\nconnected = 1\n", unknownLink, 1.9},
        {"cellular_status", serialPorts, "answer = silent\n", noSerialPort},
    };
    store.Set({{dialup, "none"}});
    for (auto const &[method, file, content, result, longest] : cases) {
        device::ReplacedFile const replaced(file, content);
        std::string told;
        double seconds = 0;
        // A busy machine makes a daemon late now and then, but not each time.
        for (int tries = 0; tries < 4 && (tries == 0 || told != result || seconds >= longest); ++tries) {
            auto const start = std::chrono::steady_clock::now();
            told = Status(method);
            seconds = Seconds(start);
        }
        EXPECT_EQ(told, result) << content;
        EXPECT_LT(seconds, longest) << content;
    }
    device::RecordingProgram const chronyc("/usr/bin/chronyc", "echo '506 Cannot talk to daemon'");
    EXPECT_EQ(Status("ntpd_status"), R"({"isChronyd":true,"running":false})");
}

TEST_F(StatusMethodsTest, NtpdWhereThereIsNoChronyd) {
    device::ReplacedFile const noChronyc("/usr/bin/chronyc");
    device::RecordingProgram const ntpq("/usr/bin/ntpq", "echo \"*192.168.1.10 10.0.0.1 $*\"");
    EXPECT_EQ(
        Status("ntpd_status"),
        R"({"gpsSync":false,"hasGps":false,"ppsSync":false,"rawOutput":"*192.168.1.10 10.0.0.1 -pn\n","running":true,"syncTo":"192.168.1.10"})");
}

TEST_F(StatusMethodsTest, TailOfTheSystemLogInUse) {
    store.Set({{"syslogd/persistent", "no"}});
    device::Log const volatileLog;
    device::Shell("logger -t test 'the volatile log'");
    EXPECT_TRUE(volatileLog.Has("the volatile log"));
    ExpectParts(Status("tail_syslog"), {"test: the volatile log"});

    std::string lines = "the line before the last thirty\n";
    for (int i = 0; i < 30; ++i)
        lines += std::string(299, 'x') + '\n';
    device::ReplacedFile const log("/home/root/log/messages", lines);
    store.Set({{"syslogd/persistent", "yes"}});
    std::string const tail = Status("tail_syslog");
    EXPECT_EQ(tail.find("before"), std::string::npos);
    // 26 whole lines, and of the next what fits into 8096 bytes.
    EXPECT_TRUE(tail.ends_with("x\\n" + std::string(8096 - 26 * 300 - 3, 'x') + "...\"}")) << tail;
}

TEST_F(StatusMethodsTest, WifiInterfacesTellMoreWhenTheyAreOn) {
    store.Set({{"net/wifi/ap/enabled", "no"}, {"net/wifi/client/enabled", ""}});
    EXPECT_EQ(Status("wifi_ap_status"), R"({"ap0_enabled":false})");
    EXPECT_EQ(Status("wifi_client_status"), R"({"client0_enabled":false})");
    store.Set({{"net/wifi/ap/enabled", "yes"}, {"net/wifi/client/enabled", "yes"}});
    // A client chooses its name itself.
    device::ReplacedFile const leases("/tmp/dhcp.leases", "1 aa:bb 192.168.2.7 <b>\"\x1B[2J\xFF\\\n");
    device::RecordingProgram const iw("/usr/sbin/iw", "echo \"$*\"; echo 'signal: -50'");
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
        {R"("client0_enabled":true)", R"("client0_status":"dev client0 info\nsignal: -50\n)",
         R"("client0_ifconfig_status":)", R"("Routing":"Kernel IP routing table\n)", "a WIFI line 9\\n"});
}

TEST_F(StatusMethodsTest, ChannelsOfACountry) {
    ExpectParts(Status("wifi_get_channels", R"(["US"])"),
                {R"("channels":["1:2412","2:2417",)", R"("36:5180")", R"("countryCode":"US")"});
    EXPECT_EQ(Status("wifi_get_channels", R"(["no such country"])"), R"({"countryCode":"no such country"})");
}

// A poll of a silent daemon waits a second: the next answer is there after two, whoever else asks what.
TEST_F(StatusMethodsTest, ManyPollersOfSilentDaemonsWaitTogether) {
    device::ReplacedFile const link(statusd, "answer = silent\n");
    device::ReplacedFile const tunnel(openvpnd, "answer = silent\n");
    std::pair<char const *, char const *> const polls[] = {
        {"orvane_status", R"("serverAddress":"Unknown")"},
        {"openvpn_status", R"("connectionStatus":"Unknown","currentStateTimeString":"Unknown")"}};
    auto const start = std::chrono::steady_clock::now();
    {
        std::vector<std::jthread> pollers;
        for (int i = 0; i < 8; ++i)
            pollers.emplace_back([&poll = polls[i % 2]] { ExpectParts(Status(poll.first), {poll.second}); });
    }
    EXPECT_LT(Seconds(start), 3.5);
}

TEST_F(StatusMethodsTest, OpenVpn) {
    constexpr char path[] = "/tmp/status_methods.ovpn";
    std::string const request = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes ";
    std::string const certificate = device::Shell(
        "cd /tmp; " + request +
        "-subj '/O=Field, Ltd/CN=vpn-1.example' -keyout ca.key -out ca.crt 2>/dev/null;" + request +
        "-CA ca.crt -CAkey ca.key -subj /CN=box-7.example -keyout /dev/null 2>/dev/null; rm ca.*");
    device::ReplacedFile const configuration(path, "client\n<cert>\n" + certificate + "</cert>\n");
    device::ReplacedFile const connection(openvpnd,
                                          "connected = 1\nseconds_in_state = 301\nstatus = Connected <b>\n");
    device::ReplacedFile const log("/tmp/openvpn.log", "one\ntwo\n");
    device::ReplacedFile const standard("/etc/openvpn/client.conf");
    std::string const embedded = std::string("\"Embedded in ") + path + '"';
    std::string const names = R"("organization":"Field","organizationalUnit":"","server":"vpn")";
    std::tuple<char const *, char const *, char const *, Strings> const cases[] = {
        {none,
         none,
         none,
         {R"("connectionStatus":"Connected <b>")", R"("isConnected":true)",
          R"("currentStateTimeString":"5 minutes")", R"("configurationFile":"Missing")",
          R"("caCertificate":"Missing","client":"",)",
          R"("clientCertificate":"Missing","clientKey":"Missing")",
          R"("organization":"","organizationalUnit":"","server":"")"}},
        {path,
         "/tmp/none.crt",
         none,
         {std::string("\"configurationFile\":\"") + path + '"', "\"caCertificate\":" + embedded,
          R"("client":"box-7.example")", "\"clientCertificate\":" + embedded, "\"clientKey\":" + embedded,
          R"("logOutput":"one\ntwo\n")", names}},
        {"/tmp/gone.ovpn",
         path,
         "/tmp/some.key",
         {std::string("\"caCertificate\":\"") + path + '"', R"("clientKey":"/tmp/some.key")", names}},
    };
    for (auto const &[uploaded, authority, key, parts] : cases) {
        store.Set({{"net/openvpn/client_ovpn", uploaded},
                   {"net/openvpn/ca_crt", authority},
                   {"net/openvpn/client_crt", none},
                   {"net/openvpn/client_key", key}});
        ExpectParts(Status("openvpn_status"), parts);
    }
    device::WriteFile("/etc/openvpn/client.conf", "");
    device::WriteFile(openvpnd, "answer = garbage\n");
    ExpectParts(Status("openvpn_status"), {R"("configurationFile":"/etc/openvpn/client.conf")",
                                           R"("isConnected":true)", "\"connectionStatus\":\"\uFFFD\uFFFD"});
}

// The poll asks each second; the log tells a state when it begins.
TEST_F(StatusMethodsTest, AFileWithoutACertificateIsLoggedOnce) {
    constexpr char path[] = "/tmp/status_methods.crt";
    device::ReplacedFile const file(path, "none\n");
    store.Set({{"net/openvpn/client_ovpn", none}, {"net/openvpn/ca_crt", path}});
    device::Log const log;
    for (int times = 0; times < 3; ++times)
        Status("openvpn_status");
    device::Shell("logger the end of the polls");
    EXPECT_TRUE(log.Has("the end of the polls"));
    EXPECT_EQ(device::Count(log.Text(), "GetCertificateDetils: Certificate format error"), 1U);
}

TEST_F(StatusMethodsTest, CellularModem) {
    store.Set({{dialup, "gprs_dialup"}});
    device::ReplacedFile const modem(seriald,
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
    device::WriteFile(seriald, "answer = garbage\n");
    ExpectParts(Status("cellular_status"), {R"("sim_status":"Unknown")", "\"network\":\"\uFFFD"});
    device::WriteFile(seriald, "answer = silent\n");
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

TEST_F(StatusMethodsTest, MetricsOutlastAReloadAndNobodyHoldsThemUp) {
    store.Set({{dialup, "gprs_dialup"}, {"net/openvpn/enabled", "yes"}});
    device::ReplacedFile const modem(seriald, "signal_quality = 20\n");
    device::ReplacedFile const tunnel(openvpnd, "answer = silent\n");
    device::Process const process(device::Configuration(9108, R"("metrics":true,)"));
    Browser browser = device::Up("http://127.0.0.1:9108");
    auto const start = std::chrono::steady_clock::now();
    auto const told = [&](std::string const &text, std::string const &since = "[0]") {
        return browser.Call("metrics", since).result.find(text) != std::string::npos;
    };
    told("");
    EXPECT_LT(Seconds(start), 0.9);
    EXPECT_TRUE(device::WaitUntil(5, [&] { return told(R"("signal":-73)"); }));
    ExpectParts(browser.Call("metrics", "[0]").result,
                {R"("address":"10.99.0.2","load":)", R"("uplink":"eth0","vpn":{"enabled":true})",
                 R"("signal":"-73")", R"("eth0":{"received":"","sent":""})"});
    EXPECT_TRUE(device::Reload(process, browser));
    EXPECT_TRUE(told(R"("signal":"-73")"));
    EXPECT_EQ(browser.Call("metrics", R"(["0"])").body,
              R"({"id":1,"error":"Invalid parameters","result":null})");
    EXPECT_EQ(Html(browser.Get("/config/").body).Count("//*[@id='overview']"), 1U);

    device::Process const without(device::Configuration(9107));
    Browser other = device::Up("http://127.0.0.1:9107");
    EXPECT_EQ(other.Call("metrics", "[0]").body, R"({"id":1,"error":"Method not found","result":null})");
    EXPECT_EQ(Html(other.Get("/config/").body).Count("//*[@id='overview']"), 0U);
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
    device::Process process(device::Configuration(9107));
    device::Up("http://127.0.0.1:9107");
    std::string const descriptors = "/proc/" + std::to_string(process.Pid()) + "/fd/";
    Answer answer;
    // Descriptors of connections before this one may just be going.
    for (int tries = 20; answer.status != 404 && tries > 0; --tries) {
        rlim_t next = 0;
        while (std::filesystem::exists(descriptors + std::to_string(next)))
            ++next;
        rlimit const one{next + 1, next + 1};  // that of the connection
        ASSERT_EQ(prlimit(process.Pid(), RLIMIT_NOFILE, &one, nullptr), 0);
        answer = Browser("http://127.0.0.1:9107").Call("cellular_status");
    }
    EXPECT_EQ(answer.status, 404) << answer.body;
    EXPECT_TRUE(process.WaitForLog("vexaClient.GetFd() failed"));
}

TEST(StatusTest, MethodsWithoutParametersTakeNone) {
    Browser browser(device::address);
    for (char const *method : {"general_dynamic_status", "fw_upgrade_status", "prepare_fw_upgrade", "reload"})
        EXPECT_EQ(browser.Call(method, "[null]").body,
                  R"({"id":1,"error":"Invalid parametres number","result":null})")
            << method;
}

TEST(StatusTest, FirmwareUpgradeStatus) {
    Browser browser(device::address);
    device::ReplacedFile const noLock(firmwareLock);
    std::string const longest = '"' + std::string(99, 'x') + '"';
    struct {
        std::string line;
        std::string finished;  // answer while no upgrade runs
        std::string running;   // answer while one does
    } const cases[] = {
        {"", R"("")", R"("")"},
        {"done\n", R"("done\n")", R"("done\n")"},
        {"{ 'state' : 'writing' }\nsecond line\n", failed, R"("{ 'state' : 'writing' }\n")"},
        {"{ 'state' : 'done' }", R"("{ 'state' : 'done' }")", R"("{ 'state' : 'done' }")"},
        {std::string(300, 'x'), failed, longest},
    };
    for (auto const &[line, finished, running] : cases) {
        device::ReplacedFile const status(firmwareStatus, line);
        EXPECT_EQ(browser.Call("fw_upgrade_status").result, finished) << line;
        device::HeldLock const upgrade(firmwareLock);
        EXPECT_EQ(browser.Call("fw_upgrade_status").result, running) << line;
    }
    device::ReplacedFile const none(firmwareStatus);
    EXPECT_EQ(browser.Call("fw_upgrade_status").result, failed);
}

TEST(StatusTest, PreparingAnUpgradeAnswersTheRawStatusOfTheCommand) {
    Browser browser(device::address);
    device::Shell("$APPLICATION_DIR/etc/rcS.d/deployer start");  // an upgrade may have stopped it
    EXPECT_EQ(browser.Call("prepare_fw_upgrade").result, "0");
    EXPECT_NE(device::Shell("supvis --list").find("deployer\tsuspended"), std::string::npos);
    device::Shell("supvis --resume deployer");
    device::ReplacedFile const failure("/etc/fail/supvis", "3");
    EXPECT_EQ(browser.Call("prepare_fw_upgrade").result, "768");
}

}  // namespace pages

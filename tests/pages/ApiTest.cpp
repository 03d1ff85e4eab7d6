#include <memory>
#include <regex>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr int port = 8096;
std::string const address = "http://127.0.0.1:" + std::to_string(port);
constexpr char rule[] = "net/portfwd/tcp/08443/";

/// A service of the test's own, which puts nothing on trial.
class ApiTest : public testing::Test {
  protected:
    ApiTest() {
        device::Shell("rm -rf /tmp/api; mkdir /tmp/api");
        store.Set({{"net/hostname", "mast"},
                   {"net/lan_addr_mode", "dhcp"},
                   {"net/wifi/client/enabled", "no"},
                   {"net/wifi/client/essid", "plant"},
                   {"net/wifi/client/wpa_psk", ""},
                   {std::string(rule) + "d_ip", device::none},
                   {std::string(rule) + "d_port", device::none}});
        service = std::make_unique<device::Process>(configuration);
        browser = std::make_unique<Browser>(device::Up(address));
        device::TakeCommands();
    }

    /// The answer without what every one has, and without the time.
    std::string Call(std::string const &method, std::string const &parameters) {
        std::string body = browser->Call(method, parameters).body;
        static std::regex const noise(
            R"re(^\{"id":1,|"error":null,|,"result":null|,"trial":\{[^}]*\}|"restart":[a-z]+,?|"time":[0-9]+,|"in_effect":true,)re");
        return std::regex_replace(body, noise, "");
    }
    std::string Set(std::string const &patch) { return Call("settings_set", '[' + patch + ']'); }
    static std::string Stored(std::string const &key) { return device::Shell("prm get " + key + " 2>&1"); }

    std::string const configuration = device::Configuration(
        port,
        R"("history":{"file":"/tmp/api/history.db"},"api":true,"security":{"audit":true,"digest_sha256":true},)");
    device::KeptStore const store;
    std::unique_ptr<device::Process> service;
    std::unique_ptr<Browser> browser;
};

}  // namespace

TEST_F(ApiTest, APatchIsOneSetWithItsCommandsAndIsMadeOnce) {
    std::string const forward = std::string(R"({")") + rule + R"(d_ip":"192.168.0.33",")" + rule +
                                R"(d_port":443,"net/hostname":"mast-7","system/ntpd/enabled":true})";
    device::ReplacedFile const audit("/var/log/audit", "");
    std::string const before = Stored("system/ntpd/enabled");
    std::string const made = Set(forward);
    EXPECT_TRUE(made.starts_with(R"("result":{"changed":["net/hostname","net/portfwd/tcp/08443/d_ip",)"))
        << made;
    EXPECT_NE(made.find(R"("set":1)"), std::string::npos) << made;
    EXPECT_EQ(Stored(std::string(rule) + "d_port"), "443\n");
    EXPECT_EQ(Stored("system/ntpd/enabled"), "yes\n");
    Strings const commands = device::TakeCommands();
    EXPECT_EQ(commands.front(), "/etc/nat_setup.sh web_forwarding");
    EXPECT_EQ(commands.size(), before == "yes\n" ? 1U : 3U);
    EXPECT_TRUE(device::WaitForText("/var/log/audit",
                                    "audit event=setting result=ok user=- address=127.0.0.1 page=machines"));

    EXPECT_EQ(Set(forward), R"("result":{"changed":[],"set":null}})");
    EXPECT_EQ(Call("settings_diff", '[' + forward + ']'), R"("result":{"changes":[],"refused":{}}})");
    EXPECT_EQ(device::TakeCommands(), Strings());

    Set(R"({"net/hostname":"mast-8"})");
    EXPECT_EQ(Call("history_undo", "[1,false]"),
              R"("error":{"code":"conflict","conflicts":["net/hostname"],)"
              R"("message":"Settings have changed since: nothing was taken back"}})");
    EXPECT_EQ(Stored("net/hostname"), "mast-8\n");
    EXPECT_NE(Call("history_undo", "[1,true]").find(R"("set":3)"), std::string::npos);
    EXPECT_EQ(Stored("net/hostname"), "mast\n");
    std::string const newest = Call("history_list", "[0,1]");
    EXPECT_NE(newest.find(R"("number":3,"page":"machines","reason":"Undo of 1","result":"saved")"),
              std::string::npos)
        << newest;
    EXPECT_EQ(newest.find(R"("number":2)"), std::string::npos);
    EXPECT_NE(Call("history_list", "[3,1]").find(R"("number":2)"), std::string::npos);
}

TEST_F(ApiTest, TheDeviceIsRestartedOnceByWhoeverAsksTwice) {
    device::RecordingProgram const reboot("/usr/sbin/reboot", device::tellStart);
    device::ReplacedFile const audit("/var/log/audit", "");
    std::string const boot = device::Shell("tr -d '\\n' </proc/sys/kernel/random/boot_id");
    EXPECT_NE(Call("device_describe", "[]").find(boot), std::string::npos);
    device::TakeCommands();
    EXPECT_EQ(Call("device_restart", R"(["another"])"), R"("result":false})");
    EXPECT_EQ(Call("device_restart", "[1]"), R"("error":"Invalid parameters"})");
    {
        device::HeldLock const upgrade("/tmp/fwtool_6v1Znb.lock");
        EXPECT_NE(Call("device_restart", "[\"" + boot + "\"]").find(R"("code":"busy")"), std::string::npos);
    }
    EXPECT_EQ(device::TakeCommands(), Strings());
    EXPECT_EQ(Call("device_restart", "[\"" + boot + "\"]"), R"("result":true})");
    device::Start();
    EXPECT_EQ(device::TakeCommands(), Strings{"/sbin/reboot -d 5"});
    EXPECT_TRUE(device::WaitForText("/var/log/audit",
                                    "audit event=reboot result=ok user=- address=127.0.0.1 page=machines"));
}

TEST_F(ApiTest, NothingIsStoredOfWhatIsWrong) {
    device::Settings const before = device::KeptStore::All();
    std::pair<char const *, char const *> const cases[] = {
        {R"({"net/hostname":"x","nothing":"1"})", R"("refused":{"nothing":"There is no such setting"}})"},
        {R"({"/net/hostname":"x"})", R"({"/net/hostname":"There is no such setting"}})"},
        {R"({"net/portfwd/tcp/*/d_ip":"1.2.3.4"})", "There is no such setting"},
        {R"({"net/hostname":null})", "Invalid length; minimum 1, maximum 64"},
        {R"({"net/hostname":1.5})", "Neither a text nor a whole number"},
        {R"({"net/hostname":["x"]})", "Neither a text nor a whole number"},
        {R"({"net/hostname":"x\u0000y"})", "control characters"},
        {R"({"net/portfwd/tcp/08443/d_ip":"1.2.3.4"})", R"("net/portfwd/tcp/08443/d_port":"A rule needs)"},
        {R"({"net/wifi/client/enabled":true,"net/wifi/client/security":"wpa"})",
         R"("net/wifi/client/wpa_psk":"This)"},
        {R"({"webman/digest/admin":"1234"})", "Invalid length; minimum 5"},
        {R"({"system/digest/root":"12345678"})", "only set on its page"},
        {R"({"net/wifi/client/wpa_psk":{"set":true}})", "Not what the device has"},
    };
    for (auto const &[patch, expected] : cases) {
        std::string const refused = Set(patch);
        EXPECT_TRUE(refused.starts_with(R"("error":{"code":"refused",)")) << patch << refused;
        EXPECT_NE(refused.find(expected), std::string::npos) << patch << refused;
    }
    EXPECT_EQ(Call("settings_set", "[1]"), R"("error":"Invalid parameters"})");
    EXPECT_EQ(Call("history_undo", R"(["1",false])"), R"("error":"Invalid parameters"})");
    EXPECT_EQ(Call("history_list", "[0,10]"), R"("result":[]})");
    EXPECT_EQ(device::KeptStore::Changes(before), device::Settings());

    device::RefusedKey const noWrite("net/hostname");
    EXPECT_NE(Set(R"({"net/hostname":"x"})").find(R"("code":"failed")"), std::string::npos);
}

TEST_F(ApiTest, SecretsAreSetAsPeopleKnowThemAndNeverSeen) {
    device::RecordingProgram const logIn("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    std::string const patch =
        R"({"net/wifi/client/wpa_psk":"a long pass phrase","net/wifi/client/eap/password":"sesame",)"
        R"("webman/digest/admin":"open sesame","gprs/password":"plain secret"})";
    EXPECT_NE(Set(patch).find("webman/digest256/admin"), std::string::npos);
    std::string const key = Stored("net/wifi/client/wpa_psk");
    EXPECT_EQ(key.size(), 65U);
    EXPECT_TRUE(Stored("net/wifi/client/eap/password").starts_with("hash:"));
    std::string const web = Stored("webman/digest/admin");
    EXPECT_TRUE(Stored("webman/digest256/admin").starts_with(web.substr(0, 32) + ':'));
    EXPECT_EQ(Set(patch), R"("result":{"changed":[],"set":null}})");
    EXPECT_EQ(Set(R"({"gprs/password":{"set":true}})"), R"("result":{"changed":[],"set":null}})");
    // Another name makes another key of the same phrase.
    EXPECT_NE(Set(R"({"net/wifi/client/essid":"mine","net/wifi/client/wpa_psk":"a long pass phrase"})")
                  .find(R"("changed":["net/wifi/client/essid","net/wifi/client/wpa_psk"])"),
              std::string::npos);

    std::string const all = Call("settings_get", "[[]]") + Call("history_list", "[0,100]") +
                            Call("settings_diff", R"([{"gprs/password":"other secret"}])") + service->Log();
    EXPECT_NE(all.find(R"("gprs/password":{"set":true})"), std::string::npos);
    EXPECT_NE(all.find(R"("after":{"set":true},"before":{"set":)"), std::string::npos);
    for (std::string const &secret : {std::string("secret"), std::string("sesame"), std::string("phrase"),
                                      web.substr(0, 32), key.substr(0, 64)}) {
        std::string const shown = std::regex_replace(all, std::regex("Cellular secret"), "");
        EXPECT_EQ(shown.find(secret), std::string::npos) << secret;
    }
}

TEST_F(ApiTest, OnlyWhereItIsAskedFor) {
    for (std::string const &keys :
         {std::string(R"("api":true,)"), std::string(R"("history":{"file":"/tmp/api/other.db"},)")}) {
        device::Process const other(device::Configuration(port + 10, keys));
        Browser by = device::Up("http://127.0.0.1:" + std::to_string(port + 10));
        for (char const *const method : {"rpc.discover", "settings_describe"})
            EXPECT_NE(by.Call(method).body.find("Method not found"), std::string::npos) << keys;
    }
}

/// By the exit statuses of webconfigctl, which speaks to the device's own service.
TEST(WebconfigctlTest, ExitStatuses) {
    device::KeptStore const store;
    std::string const remote =
        "WEBCONFIG_PASSWORD=wrong webconfigctl --url https://127.0.0.1 --pin $(cat /tmp/pin) ";
    device::Shell(
        "openssl x509 -in /etc/lighttpd/server.pem -pubkey -noout | openssl pkey -pubin -outform der |"
        " openssl dgst -sha256 -binary | base64 | sed 's,^,sha256//,' > /tmp/pin");
    device::WriteFile("/tmp/mast.json", R"({"net/hostname":"ctl-9"})");
    std::pair<std::string, int> const cases[] = {
        {"webconfigctl set net/hostname=ctl-1", 0},
        {"webconfigctl diff /tmp/mast.json", 6},
        {"webconfigctl apply /tmp/mast.json && webconfigctl diff - < /tmp/mast.json", 0},
        {"webconfigctl --json history --count 1 | grep -q '\"user\":\"root\"'", 0},
        {"webconfigctl set net/hostname=", 1},
        {"webconfigctl reload && webconfigctl get net/hostname", 0},
        {"webconfigctl undo 100000", 1},
        {"webconfigctl", 2},
        {"webconfigctl diff /nothing", 2},
        {"webconfigctl --frob status", 2},
        {"webconfigctl set net/hostname < /dev/null", 2},
        {"webconfigctl --socket /nothing status", 3},
        {"webconfigctl --url https://127.0.0.1:1 --password-file /tmp/pin status", 3},
        {"WEBCONFIG_PASSWORD=x webconfigctl --url https://127.0.0.1 --pin sha256//AAAA status", 3},
        {"setpriv --reuid 65534 --clear-groups webconfigctl status", 4},
        {remote + "status", 4},
        {"webconfigctl undo $(webconfigctl --json history --count 2 |"
         " sed 's/.*\"number\":\\([0-9]*\\).*/\\1/')",
         5},
    };
    for (auto const &[line, status] : cases) {
        std::string const said = device::Shell("{ " + line + "\n} 2>&1; echo =$?");
        EXPECT_NE(said.find('=' + std::to_string(status) + '\n'), std::string::npos) << line << '\n' << said;
    }
    {
        device::RefusedKey const noWrite("net/hostname");
        EXPECT_EQ(device::Shell("webconfigctl set net/hostname=other 2>/dev/null; echo $?"), "7\n");
    }
    device::ReplacedFile const trial("/var/lib/webconfig/trial",
                                     "state returning\nset 1\nboot x\nuntil 0\nboots 0\n");
    EXPECT_NE(device::Shell("webconfigctl set net/hostname=other; echo $?").find("8\n"), std::string::npos);
}

}  // namespace pages

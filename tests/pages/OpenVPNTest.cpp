#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char openvpnPage[] = "/config/network/openvpn";
constexpr char behaviourFile[] = "/etc/daemons/provisioning";
constexpr char requestLog[] = "/var/log/provisioning";
constexpr char boundary[] = "8-7-6-5";

class OpenVPNTest : public testing::Test {
  protected:
    OpenVPNTest() {
        device::Shell("prm set net/openvpn/enabled yes; prm del net/openvpn/client_ovpn 2>/dev/null");
        EmptyFolder();
        device::WriteFile(requestLog, "");
    }
    ~OpenVPNTest() override {
        device::WriteFile(behaviourFile, behaviour);
        EmptyFolder();
    }

    Html Upload(std::string const &name, std::string const &content, std::string const &type = "text/plain") {
        std::string const part = std::string("--") + boundary + "\r\nContent-Disposition: form-data; name=\"";
        std::string const body = part + "filename\"; filename=\"" + name + "\"\r\nContent-Type: " + type +
                                 "\r\n\r\n" + content + "\r\n" + part + "submit\"\r\n\r\nUpload\r\n--" +
                                 boundary + "--\r\n";
        return Html(
            browser.Post(openvpnPage, body, std::string("multipart/form-data; boundary=") + boundary).body);
    }
    Html Provision(std::string const &server = "provisioning.example:8090") {
        return Html(browser
                        .Post(openvpnPage, Fields{{"remoteServer", server},
                                                  {"oneTimeCode", "code \"1\""},
                                                  {"deviceId", "box"},
                                                  {"submit", "Submit"}})
                        .body);
    }
    /// Makes the server behave as it usually does but for \a changes.
    void Server(std::string const &changes) const { device::WriteFile(behaviourFile, behaviour + changes); }

    static void EmptyFolder() { device::Shell("rm -rf /etc/openvpn; mkdir /etc/openvpn"); }
    /// What an upload or a download would leave.
    static std::string Temporary() { return device::Shell("ls -d /tmp/webconfig.* 2>/dev/null"); }
    static std::string ModeOf(std::string const &path) { return device::Shell("stat -c %a '" + path + "'"); }
    static std::string Installed() { return device::Shell("ls -A /etc/openvpn"); }
    static std::string StoredName() { return device::Shell("prm get net/openvpn/client_ovpn 2>&1"); }

    std::string const behaviour = device::ReadFile(behaviourFile);
    device::KeptParameters const settings{"net/openvpn/"};
    Browser browser{device::address};
};

constexpr char wrongFile[] = "Incorrect file type or file size NOT within range of 1KB to 100KB";

}  // namespace

TEST_F(OpenVPNTest, TheSwitchLocksTheOtherForms) {
    Html const on(browser.Get(openvpnPage).body);
    EXPECT_EQ(on.One("//h2[@id='config_page_title']"), " OpenVPN Configuration ");
    EXPECT_EQ(on.Count("//*[@id='cfg_vpn_enabled'][@checked]"), 1U);
    EXPECT_EQ(on.Count("//input[@disabled]"), 0U);
    EXPECT_EQ(on.One("//*[@id='cfg_rmvpn_server']/@value"), "provisioning.example:8090");
    EXPECT_EQ(on.One("//*[@id='cfg_rmvpn_deviceid']/@value").rfind("korbex_", 0), 0U);
    EXPECT_EQ(on.One("//*[@id='openvpn_file']//tr[th='Current configuration']/td"), "None");

    Html const off(browser.Post(openvpnPage, Fields{{"submit", "Save"}}).body);
    EXPECT_EQ(device::Shell("prm get net/openvpn/enabled"), "no\n");
    EXPECT_EQ(off.Count("//div[contains(@class,'form_result_msg')]"), 0U);
    EXPECT_EQ(off.All("//input[@disabled]/@id"),
              (std::vector<std::string>{"cfg_flvpn_file", "cfg_flvpn_submit", "cfg_rmvpn_server",
                                        "cfg_rmvpn_otcode", "cfg_rmvpn_deviceid", "cfg_rmvpn_submit"}));
    browser.Post(openvpnPage, Fields{{"enabled", "y"}, {"submit", "Save"}});
    EXPECT_EQ(device::Shell("prm get net/openvpn/enabled"), "yes\n");

    device::WriteFile("/etc/openvpn/client.conf", "");
    EXPECT_EQ(Html(browser.Get(openvpnPage).body).One("//tr[th='Current configuration']/td"), "client.conf");
    EXPECT_EQ(Html(browser.Post(openvpnPage, Fields{{"submit", "Other"}}).body).Count(failureMessage), 0U);
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "Unknown submit received"));
}

TEST_F(OpenVPNTest, UploadsAreInstalledUnderTheirName) {
    std::string const smallest(1024, 'c');
    device::TemporaryFile const another("/tmp/site.ovpn", "another's");
    Html const page = Upload("site.ovpn", smallest);
    EXPECT_EQ(page.One(successMessage), saved);
    EXPECT_EQ(page.One("//tr[th='Current configuration']/td"), "site.ovpn");
    EXPECT_EQ(Installed(), "site.ovpn\n");
    EXPECT_EQ(device::ReadFile("/etc/openvpn/site.ovpn"), smallest);
    EXPECT_EQ(StoredName(), "/etc/openvpn/site.ovpn\n");
    EXPECT_EQ(ModeOf("/etc/openvpn/site.ovpn"), "600\n") << "it holds a private key";
    EXPECT_EQ(device::ReadFile("/tmp/site.ovpn"), "another's");
    EXPECT_EQ(Temporary(), "");

    EXPECT_EQ(Upload("large.ovpn", std::string(102400, 'c'), "application/octet-stream").One(successMessage),
              saved);
}

TEST_F(OpenVPNTest, UploadsUnderHostileNamesStayInTheirFolder) {
    std::string const content(1024, 'c');
    std::map<std::string, std::string> const names = {
        {"../../etc/passwd.ovpn", "passwd.ovpn"},
        {"C:/Users/me/my.ovpn", "my.ovpn"},
        {"/etc/x/.ovpn", ".ovpn"},
        {"$(touch \\\"/tmp/ran\\\")`touch /tmp/ran`;'.ovpn", "ran`;'.ovpn"},
        {"$(touch ran)`touch ran`;'.ovpn", "$(touch ran)`touch ran`;'.ovpn"},
        {"<b>&.ovpn", "<b>&.ovpn"},
    };
    for (auto const &[name, installed] : names) {
        Html const page = Upload(name, content);
        EXPECT_EQ(page.One(successMessage), saved) << name;
        EXPECT_EQ(page.One("//tr[th='Current configuration']/td"), installed);
        EXPECT_EQ(device::ReadFile("/etc/openvpn/" + installed), content) << installed;
        EmptyFolder();
    }
    EXPECT_FALSE(std::filesystem::exists("/tmp/ran"));
    EXPECT_FALSE(std::filesystem::exists("/etc/passwd.ovpn"));
}

TEST_F(OpenVPNTest, WhatIsNoConfigurationFileIsRefused) {
    std::string const good(2000, 'c');
    struct {
        std::string name;
        std::string content;
    } const cases[] = {
        {"a.ovpn", std::string(1023, 'c')},
        {"a.ovpn", std::string(102401, 'c')},
        {"a.ovpn", ""},
        {"vpn.conf", good},
        {"a.ovpn.sh", good},
        {"", ""},
        {"a\xFF.ovpn", good},
    };
    for (auto const &c : cases) {
        Html const page = Upload(c.name, c.content);
        EXPECT_EQ(page.One(failureMessage), invalid) << c.name << ' ' << c.content.size();
        EXPECT_EQ(page.One(fieldErrors), wrongFile);
    }
    EXPECT_EQ(Html(browser.Post(openvpnPage, Fields{{"filename", "a.ovpn"}, {"submit", "Upload"}}).body)
                  .One(failureMessage),
              invalid);
    EXPECT_EQ(Upload("a.ovpn", good, "text/html").One(failureMessage), "Unrecognized file type");
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "Unrecognized openvpn file MIME type text/html"));
    EXPECT_EQ(Installed(), "");
}

TEST_F(OpenVPNTest, AFileThatCannotBeInstalledGivesTheSaveError) {
    device::Shell("mkdir -p /etc/openvpn/a.ovpn/a.ovpn/full");
    EXPECT_EQ(Upload("a.ovpn", std::string(2000, 'c')).One(failureMessage), notSaved);
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "Failed to replace config file: "));
    device::Shell("rm -r /etc/openvpn/a.ovpn");

    device::RefusedKey const refused("net/openvpn/client_ovpn");
    EXPECT_EQ(Upload("b.ovpn", std::string(2000, 'c')).One(failureMessage), notSaved);
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "Failed to update PRM"));
    EXPECT_EQ(Installed() + Temporary(), "");
}

TEST_F(OpenVPNTest, ProvisioningFetchesAcknowledgesAndInstalls) {
    Server("status = 202\nclient_full_name = A/B\norganisation_name = <X>\nconfig_size = 1024\n");
    device::TemporaryFile const victim("/tmp/victim", "another's");
    std::filesystem::create_symlink("/tmp/victim", "/tmp/AB(X)");
    Html const page = Provision("10.99.0.1:8090/api/");
    EXPECT_EQ(page.One(successMessage), saved);
    EXPECT_EQ(page.One("//tr[th='Current configuration']/td"), "AB(X)");
    EXPECT_EQ(page.Count("//*[@id='cfg_rmvpn_otcode']/@value"), 0U) << "the code is used up";
    EXPECT_EQ(page.One("//*[@id='cfg_rmvpn_server']/@value"), "10.99.0.1:8090/api/");
    EXPECT_EQ(StoredName(), "/etc/openvpn/AB(X)\n");
    EXPECT_EQ(device::ReadFile("/etc/openvpn/AB(X)").rfind("client\ndev tun\n", 0), 0U);
    EXPECT_EQ(ModeOf("/etc/openvpn/AB(X)"), "600\n");
    EXPECT_TRUE(std::filesystem::remove("/tmp/AB(X)"));
    EXPECT_EQ(device::ReadFile("/tmp/victim") + Temporary(), "another's");
    EXPECT_EQ(device::ReadFile(requestLog),
              R"({"endpoint": "register_client", "type": "application/json", )"
              R"("body": "{\"device_id\":\"box\",\"token\":\"code \\\"1\\\"\"}"})"
              "\n"
              R"({"endpoint": "acknowledge_bootstrap", "type": "application/json", )"
              R"("body": "{\"token\":\"code \\\"1\\\"\"}"})"
              "\n");
}

TEST_F(OpenVPNTest, TheServersNamesMakeTheFileName) {
    std::string const longest(125, 'n');
    struct {
        std::string names;
        std::string file;
    } const cases[] = {
        {"client_full_name =\n", "client.ovpn"},
        {"client_full_name = \\/:?\"<>|'\n", "client.ovpn"},
        {"client_full_name = solo\norganisation_name =\n", "solo"},
        {"client_full_name = ../../x\norganisation_name = ..\n", "....x(..)"},
        {"client_full_name = ..\norganisation_name =\n", "client.ovpn"},
        {"client_full_name = " + longest + "\norganisation_name = X\n", "client.ovpn"},
        {"client_full_name = " + longest.substr(1) + "\norganisation_name = X\n", longest.substr(1) + "(X)"},
        {"client_full_name = $(touch ran)`touch ran`\norganisation_name =\n", "$(touch ran)`touch ran`"},
    };
    for (auto const &c : cases) {
        Server(c.names);
        EXPECT_EQ(Provision().One(successMessage), saved) << c.names;
        EXPECT_EQ(Installed(), c.file + '\n');
        EmptyFolder();
    }
}

TEST_F(OpenVPNTest, AServerInABadMoodChangesNothing) {
    device::WriteFile("/etc/openvpn/client.conf", "kept");
    struct {
        char const *behaviour;
        char const *message;
        char const *requests;
    } const cases[] = {
        {"status = 200\nconfig_size = 1023\n", "File is too small to be a configuration file", "2\n"},
        {"config_size = 1\nclient_full_name = webconfig_fwsugd_flag\norganisation_name =\n",
         "File is too small to be a configuration file", "2\n"},
        {"status = 203\n", "Unexpected remote server response: 203.", "1\n"},
        {"status = 404\n", "Unexpected remote server response: 404.", "1\n"},
        {"status = 500\n", "Unexpected remote server response: 500.", "1\n"},
        {"answer = noise\n", "Unexpected JSON response.", "1\n"},
        {"answer = incomplete\n", "Unexpected JSON response.", "1\n"},
        {"answer = list\n", "Unexpected JSON response.", "1\n"},
        {"answer = silent\n", "Failed to communicate with server.", "1\n"},
        {"answer = redirect\n", "Failed to communicate with server.", "6\n"},
        {"answer = endless\n", "Failed to communicate with server.", "1\n"},
        {"delay = 1500\nstatus = 503\n", "Unexpected remote server response: 503.", "1\n"},
    };
    for (auto const &c : cases) {
        Server(c.behaviour);
        device::WriteFile(requestLog, "");
        EXPECT_EQ(Provision().One(failureMessage), c.message) << c.behaviour;
        EXPECT_EQ(device::Shell(std::string("wc -l <") + requestLog), c.requests) << c.behaviour;
        EXPECT_EQ(Installed() + Temporary(), "client.conf\n");
        EXPECT_FALSE(std::filesystem::exists("/tmp/webconfig_fwsugd_flag"));
    }
    for (char const *server :
         {"10.99.0.1:1", "no such host", "provisioning.example:99999", "[", "x\ny", "file:///etc"})
        EXPECT_EQ(Provision(server).One(failureMessage), "Failed to communicate with server.") << server;
    EXPECT_EQ(Provision("").One(failureMessage), invalid);
    EXPECT_EQ(device::ReadFile("/etc/openvpn/client.conf"), "kept");
}

TEST_F(OpenVPNTest, ASlowServerHoldsItsOwnRequestOnly) {
    Server("delay = 3000\n");
    std::thread operatorWaits([] {
        Browser(device::address)
            .Post(openvpnPage, Fields{{"remoteServer", "provisioning.example:8090"},
                                      {"oneTimeCode", "1"},
                                      {"deviceId", "1"},
                                      {"submit", "Submit"}});
    });
    EXPECT_TRUE(device::WaitForText(requestLog, "register_client"));
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(browser.Get(openvpnPage).status, 200);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    operatorWaits.join();
}

}  // namespace pages

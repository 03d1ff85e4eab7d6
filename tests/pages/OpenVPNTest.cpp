#include <filesystem>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char behaviourFile[] = "/etc/daemons/provisioning";
constexpr char requestLog[] = "/var/log/provisioning";
constexpr char wrongFile[] = "Incorrect file type or file size NOT within range of 1KB to 100KB";
constexpr char current[] = "//tr[th='Current configuration']/td";
std::string const content(1024, 'c');

class OpenVPNTest : public PageTest {
  protected:
    OpenVPNTest()
        : PageTest({"/config/network/openvpn", "net/openvpn/", {{"enabled", "yes"}, {"client_ovpn", none}}}) {
        EmptyFolder();
        device::WriteFile(requestLog, "");
    }
    ~OpenVPNTest() override {
        device::WriteFile(behaviourFile, behaviour);
        EmptyFolder();
    }

    Html Upload(std::string const &name, std::string const &bytes, Case const &expected,
                std::string const &type = "text/plain") {
        return ExpectAnswer(
            name + ", " + std::to_string(bytes.size()) + " bytes of " + type,
            [&] {
                return browser.PostFile(page.path, {"filename", name, type, bytes}, {{"submit", "Upload"}});
            },
            expected);
    }
    /// Makes the server behave as it usually does but for \a changes.
    void Server(std::string const &changes) const { device::WriteFile(behaviourFile, behaviour + changes); }

    static void EmptyFolder() { device::Shell("rm -rf /etc/openvpn; mkdir /etc/openvpn"); }
    /// What an upload or a download would leave.
    static std::string Temporary() { return device::Shell("ls -d /tmp/webconfig.* 2>/dev/null"); }
    static std::string ModeOf(std::string const &path) { return device::Shell("stat -c %a '" + path + "'"); }
    static std::string Installed() { return device::Shell("ls -A /etc/openvpn"); }
    static Settings Name(std::string const &name) { return {{"client_ovpn", "/etc/openvpn/" + name}}; }

    Fields const provision = {{"remoteServer", "provisioning.example:8090"},
                              {"oneTimeCode", "code \"1\""},
                              {"deviceId", "box"},
                              {"submit", "Submit"}};
    std::string const behaviour = device::ReadFile(behaviourFile);
};

}  // namespace

TEST_F(OpenVPNTest, TheSwitchLocksTheOtherForms) {
    Html const on = Show({}, {{"config_page_title", " OpenVPN Configuration "},
                              {"cfg_vpn_enabled", "y"},
                              {"cfg_rmvpn_server", "provisioning.example:8090"},
                              {std::string("//*[@id='openvpn_file']") + current, "None"}});
    EXPECT_EQ(on.Count("//input[@disabled]"), 0U);
    EXPECT_TRUE(on.Value("cfg_rmvpn_deviceid").starts_with("korbex_"));

    Fields const form = {{"enabled", "y"}, {"submit", "Save"}};
    Html const off =
        Expect(form, {.fields = {{"enabled", none}}, .success = "", .written = {{"enabled", "no"}}});
    EXPECT_EQ(off.All("//input[@disabled]/@id"),
              (Strings{"cfg_flvpn_file", "cfg_flvpn_submit", "cfg_rmvpn_server", "cfg_rmvpn_otcode",
                       "cfg_rmvpn_deviceid", "cfg_rmvpn_submit"}));
    device::WriteFile("/etc/openvpn/client.conf", "");
    Run(form, {{.before = {{"enabled", "no"}},
                .success = "",
                .written = {{"enabled", "yes"}},
                .shown = {{current, "client.conf"}}},
               {.fields = {{"submit", "Other"}}, .success = "", .logged = "Unknown submit received"}});
}

TEST_F(OpenVPNTest, UploadsAreInstalledUnderTheirName) {
    device::ReplacedFile const another("/tmp/site.ovpn", "another's");
    Upload("site.ovpn", content, {.written = Name("site.ovpn"), .shown = {{current, "site.ovpn"}}});
    EXPECT_EQ(Installed(), "site.ovpn\n");
    EXPECT_EQ(device::ReadFile("/etc/openvpn/site.ovpn"), content);
    EXPECT_EQ(ModeOf("/etc/openvpn/site.ovpn"), "600\n") << "it holds a private key";
    EXPECT_EQ(device::ReadFile("/tmp/site.ovpn"), "another's");
    EXPECT_EQ(Temporary(), "");
    Upload("large.ovpn", std::string(102400, 'c'), {.written = Name("large.ovpn")},
           "application/octet-stream");
    std::pair<char const *, char const *> const names[] = {
        {"../../etc/passwd.ovpn", "passwd.ovpn"},
        {"C:/Users/me/my.ovpn", "my.ovpn"},
        {"$(touch ran)`touch ran`;'.ovpn", "$(touch ran)`touch ran`;'.ovpn"},
        {"<b>&.ovpn", "<b>&.ovpn"},
    };
    for (auto const &[sent, kept] : names)
        Upload(sent, content, {.written = Name(kept), .shown = {{current, kept}}});
}

TEST_F(OpenVPNTest, WhatIsNoConfigurationFileIsRefused) {
    Case const refused = {.failure = invalid, .errors = {wrongFile}};
    for (std::size_t const size : {1023, 102401})
        Upload("a.ovpn", std::string(size, 'c'), refused);
    for (char const *name : {"vpn.conf", "a.ovpn.sh"})
        Upload(name, content, refused);
    Expect({{"filename", "a.ovpn"}, {"submit", "Upload"}}, refused);
    Upload("a.ovpn", content,
           {.failure = "Unrecognized file type", .logged = "Unrecognized openvpn file MIME type text/html"},
           "text/html");
    EXPECT_EQ(Installed(), "");
}

TEST_F(OpenVPNTest, AFileThatCannotBeInstalledGivesTheSaveError) {
    device::WriteFile("/etc/openvpn/a.ovpn/a.ovpn/full", "");
    Upload("a.ovpn", content, {.failure = notSaved, .logged = "Failed to replace config file: "});
    EmptyFolder();
    Upload("b.ovpn", content,
           {.refused = "client_ovpn", .failure = notSaved, .logged = "Failed to update PRM"});
    EXPECT_EQ(Installed() + Temporary(), "");
}

TEST_F(OpenVPNTest, AConfigurationThatRunsProgramsIsRefusedWhereTheSettingsSaySo) {
    std::string const harmful = "client\nup /bin/true\n" + content;
    auto const reason = [](std::string const &line) {
        return "The configuration is refused: line " + line +
               " has \"up\", which could run programs or reach files";
    };
    Upload("a.ovpn", harmful, {.failure = reason("2"), .logged = reason("2")});
    Server("first_line = up /bin/true\n");
    Expect(provision, {.failure = reason("1")});
    EXPECT_EQ(Installed() + Temporary(), "");
    device::Process process(device::Configuration(9109));
    browser = device::Up("http://127.0.0.1:9109");
    Upload("a.ovpn", harmful, {.written = Name("a.ovpn")});
}

TEST_F(OpenVPNTest, ProvisioningByTlsAsksAServerOnlyThatIsVerified) {
    auto const ask = [&](char const *server) {
        return Html(browser.Post(page.path, With(provision, {{"remoteServer", server}})).body)
            .One(failureMessage);
    };
    // The device's own web server, whose certificate has the device's name.
    device::ReplacedFile const hosts("/etc/hosts", "127.0.0.1 virtual-device other.example\n");
    EXPECT_EQ(ask("https://virtual-device"), "Failed to communicate with server.");
    device::ReplacedFile const trusted("/etc/ssl/certs/ca-certificates.crt",
                                       device::ReadFile("/etc/lighttpd/server.pem"));
    EXPECT_EQ(ask("https://other.example"), "Failed to communicate with server.");
    EXPECT_TRUE(ask("https://virtual-device").starts_with("Unexpected remote server response: "));
}

TEST_F(OpenVPNTest, ProvisioningFetchesAcknowledgesAndInstalls) {
    Server("status = 202\nclient_full_name = A/B\norganisation_name = <X>\nconfig_size = 1024\n");
    device::ReplacedFile const victim("/tmp/victim", "another's");
    std::filesystem::create_symlink("/tmp/victim", "/tmp/AB(X)");
    Expect(provision, {.fields = {{"remoteServer", "10.99.0.1:8090/api/"}},
                       .written = Name("AB(X)"),
                       .shown = {{current, "AB(X)"},
                                 {"cfg_rmvpn_otcode", ""},  // the code is used up
                                 {"cfg_rmvpn_server", "10.99.0.1:8090/api/"}}});
    EXPECT_TRUE(device::ReadFile("/etc/openvpn/AB(X)").starts_with("client\ndev tun\n"));
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
    std::string const longest(124, 'n');
    std::pair<std::string, std::string> const cases[] = {
        {"client_full_name = \\/:?\"<>|'\n", "client.ovpn"},
        {"client_full_name = solo\norganisation_name =\n", "solo"},
        {"client_full_name = ../../x\norganisation_name = ..\n", "....x(..)"},
        {"client_full_name = ..\norganisation_name =\n", "client.ovpn"},
        {"client_full_name = " + longest + "n\norganisation_name = X\n", "client.ovpn"},
        {"client_full_name = " + longest + "\norganisation_name = X\n", longest + "(X)"},
        {"client_full_name = $(touch ran)`touch ran`\norganisation_name =\n", "$(touch ran)`touch ran`"},
    };
    for (auto const &[names, file] : cases) {
        Server(names);
        Expect(provision, {.written = Name(file)});
        EXPECT_EQ(Installed(), file + '\n');
        EmptyFolder();
    }
}

TEST_F(OpenVPNTest, AServerInABadMoodChangesNothing) {
    device::WriteFile("/etc/openvpn/client.conf", "kept");
    std::tuple<char const *, char const *, char const *> const cases[] = {
        {"status = 200\nconfig_size = 1023\n", "File is too small to be a configuration file", "2\n"},
        {"config_size = 1\nclient_full_name = webconfig_fwsugd_flag\norganisation_name =\n",
         "File is too small to be a configuration file", "2\n"},
        {"status = 404\n", "Unexpected remote server response: 404.", "1\n"},
        {"answer = noise\n", "Unexpected JSON response.", "1\n"},
        {"answer = list\n", "Unexpected JSON response.", "1\n"},
        {"answer = redirect\n", "Failed to communicate with server.", "6\n"},
        {"answer = endless\n", "Failed to communicate with server.", "1\n"},
    };
    for (auto const &[behaviour, message, requests] : cases) {
        Server(behaviour);
        device::WriteFile(requestLog, "");
        Expect(provision, {.failure = message});
        EXPECT_EQ(device::Shell(std::string("wc -l <") + requestLog), requests) << behaviour;
        EXPECT_EQ(Installed() + Temporary(), "client.conf\n");
        EXPECT_FALSE(std::filesystem::exists("/tmp/webconfig_fwsugd_flag"));
    }
    for (char const *server : {"10.99.0.1:1", "no such host", "file:///etc"})
        Expect(provision,
               {.fields = {{"remoteServer", server}}, .failure = "Failed to communicate with server."});
    Refuses(provision, {{"remoteServer", "", {"This field is required"}}});
    EXPECT_EQ(device::ReadFile("/etc/openvpn/client.conf"), "kept");
}

}  // namespace pages

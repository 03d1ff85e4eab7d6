#include <filesystem>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char auditFile[] = "/var/log/audit";
std::string const advanced = "/config/settings/advanced";
constexpr char entries[] = "//div[@id='advanced_audit']//td[b]";

}  // namespace

TEST(AuditTest, TellsWhoDidWhatAndThePageFindsIt) {
    device::KeptStore const store;
    store.Set({{"system/remote/ssh_enabled", "yes"}, {"system/remote/icmp_enabled", "no"}});
    device::ReplacedFile const file(auditFile, "");
    Browser browser(device::address);
    device::RecordingProgram const nat("/etc/nat_setup.sh", "exit 0");
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    device::RecordingProgram const erase("/etc/erase/erase-partition", "exit 3");
    device::RecordingProgram const reboot("/usr/sbin/reboot", "exit 0");
    Fields const password = {
        {"passwordWeb", "topSecret7"}, {"passwordConfirmWeb", "topSecret7"}, {"submit", "Save Web Password"}};
    std::string const hostile = "x web: audit event=reboot <b>.tar";
    browser.Post(advanced, Fields{{"submit", "Save"}});
    {
        device::RefusedKey const key("system/remote/ssh_enabled");
        browser.Post(advanced, Fields{{"submit", "Save"}, {"remoteSshEnabled", "y"}});
    }
    browser.Post(advanced, password);
    browser.PostFile("/config/settings/firmware", {"fwupload", hostile, "text/plain", "abc"});
    browser.PostFile("/config/network/openvpn", {"filename", "a.ovpn", "text/plain", std::string(2000, '0')},
                     {{"submit", "Upload"}});
    browser.Post(advanced, Fields{{"submit", "Backup Configuration"}});
    browser.Post(advanced, Fields{{"submit", "ErasePartition"}, {"eraseWhich", "erase_log"}});
    browser.Post("/config/settings/reboot", Fields{{"_1", "Reboot"}});

    ASSERT_TRUE(device::WaitForText(auditFile, "audit event=reboot "));
    EXPECT_EQ(device::ReadFile("/var/log/messages").find("audit event="), std::string::npos);
    std::string const admin = " user=admin address=127.0.0.1 page=/config/";
    std::string const onAdvanced = admin + "settings/advanced ";
    std::string const ssh = onAdvanced + "key=system/remote/ssh_enabled operation=setPar\n";
    std::string const vpn = admin + "network/openvpn ";
    std::string const digest = device::Shell("printf %02000d 0 | sha256sum | cut -c1-64 | tr -d '\\n'");
    EXPECT_EQ(device::Shell("sed -E 's/.* web: audit event=//; s/time=[0-9TZ:-]* ?//' /var/log/audit"),
              "setting result=ok" + ssh + "setting result=failed" + ssh + "password result=ok" + onAdvanced +
                  "key=webman/digest256/admin operation=setPar\npassword result=ok" + onAdvanced +
                  "key=webman/digest/admin operation=setPar\nupload result=refused" + admin +
                  "settings/firmware size=3 name=x%20web:%20audit%20event%3Dreboot%20%3Cb%3E.tar\n"
                  "upload result=ok" +
                  vpn + "sha256=" + digest + " size=2000 name=a.ovpn\nsetting result=ok" + vpn +
                  "key=net/openvpn/client_ovpn operation=addFile\nsetting result=ok" + vpn +
                  "key=net/openvpn/client_ovpn operation=setPar\ndownload result=ok" + onAdvanced +
                  "name=Config_VD-0001-0042.txt\nerase result=failed" + onAdvanced +
                  "what=erase_log\nreboot result=ok" + admin + "settings/reboot \n");

    std::pair<std::string, std::size_t> const searches[] = {
        {"", 11},
        {"&auditEvent=upload&auditText=%3CB%3E.tar", 1},
        {"&auditText=none+such", 0},
        {"&auditText=" + std::string(65, 'a'), 11},  // refused
    };
    for (auto const &[query, count] : searches) {
        Answer const found = browser.Get(advanced + "?auditShow=Show" + query);
        EXPECT_EQ(Html(found.body).Count(entries), count) << query;
        auto const tabs = Html(found.body).Count("//ul[@class='tabnav']/li");
        EXPECT_NE(found.body.find("selected: " + std::to_string(tabs - 1)), std::string::npos) << query;
    }
}

TEST(AuditTest, WithoutTheKeyThereIsNoneAndWithoutTheFileThePageSaysSo) {
    device::ReplacedFile const file(auditFile);
    std::filesystem::create_directory(auditFile);
    device::Process process(device::Configuration(9108));
    Browser plain = device::Up("http://127.0.0.1:9108");
    EXPECT_EQ(Html(plain.Get(advanced).body).Count("//*[contains(@id,'audit')]"), 0U);
    Html const html(Browser(device::address).Get(advanced).body);
    EXPECT_EQ(html.One("//div[@id='advanced_audit']/p"), "The audit log cannot be read.");
}

}  // namespace pages

#include <filesystem>
#include <functional>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char auditFile[] = "/var/log/audit";
constexpr char advanced[] = "/config/settings/advanced";
constexpr char entries[] = "//div[@id='advanced_audit']//td[b]";

}  // namespace

TEST(AuditTest, TellsWhoDidWhatAndThePageFindsIt) {
    device::KeptStore const store;
    store.Set({{"system/remote/ssh_enabled", "no"}});
    device::ReplacedFile const file(auditFile, "");
    Browser browser(device::address);
    device::RecordingProgram const nat("/etc/nat_setup.sh", "exit 0");
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    device::RecordingProgram const erase("/etc/erase/erase-partition", "exit 3");
    device::RecordingProgram const reboot("/usr/sbin/reboot", "exit 0");
    std::string const secret = "topSecret7";
    std::string const hostile = "x web: audit event=reboot <b>.tar";
    std::string const openVpn = "/config/network/openvpn";
    std::string const content(2000, '0');
    auto const post = [&browser](std::string const &path, Fields const &fields) {
        return [&browser, path, fields] { browser.Post(path, fields); };
    };
    struct {
        std::function<void()> act;
        std::string line;  // from "event" to the page
        std::string details;
    } const cases[] = {
        {post(advanced, {{"submit", "Save"}, {"remoteSshEnabled", "y"}}), "setting result=ok",
         "key=system/remote/ssh_enabled operation=setPar"},
        {[&] {
             device::RefusedKey const key("system/remote/ssh_enabled");
             browser.Post(advanced, Fields{{"submit", "Save"}});
         },
         "setting result=failed", "key=system/remote/ssh_enabled operation=setPar"},
        {post(advanced,
              {{"passwordWeb", secret}, {"passwordConfirmWeb", secret}, {"submit", "Save Web Password"}}),
         "password result=ok", "key=webman/digest/admin operation=setPar"},
        {[&] {
             browser.PostFile(openVpn, {"filename", "a.ovpn", "text/plain", content}, {{"submit", "Upload"}});
         },
         "upload result=ok",
         "sha256=" + device::Shell("printf %02000d 0 | sha256sum | cut -c1-64 | tr -d '\\n'") +
             " size=2000 name=a.ovpn"},
        {[&] {
             browser.PostFile("/config/settings/firmware", {"fwupload", hostile, "text/plain", "abc"});
         },
         "upload result=refused", "size=3 name=x%20web:%20audit%20event%3Dreboot%20%3Cb%3E.tar"},
        {post(advanced, {{"submit", "Backup Configuration"}}), "download result=ok",
         "name=Config_VD-0001-0042.txt"},
        {post(advanced, {{"submit", "ErasePartition"}, {"eraseWhich", "erase_log"}}), "erase result=failed",
         "what=erase_log"},
        {post("/config/settings/reboot", {{"_1", "Reboot"}}), "reboot result=ok", "\n"},
    };
    for (auto const &[act, line, details] : cases) {
        act();
        EXPECT_TRUE(device::WaitForText(auditFile,
                                        " web: audit event=" + line + " user=admin address=127.0.0.1 page=/"))
            << line;
        EXPECT_TRUE(device::WaitForText(auditFile, details)) << line << '\n' << device::ReadFile(auditFile);
    }
    EXPECT_EQ(device::ReadFile(auditFile).find(secret), std::string::npos);
    EXPECT_EQ(device::ReadFile("/var/log/messages").find("audit event="), std::string::npos);
    EXPECT_EQ(device::Count(device::ReadFile(auditFile), "audit event=reboot"), 1U);

    Html const all(browser.Get(std::string(advanced) + "?auditShow=Show").body);
    EXPECT_TRUE(
        all.All(entries).at(0).starts_with("reboot ok by admin from 127.0.0.1 at /config/settings/reboot"));
    EXPECT_EQ(all.All(entries).size(), device::Count(device::ReadFile(auditFile), "audit event="));
    std::pair<std::string, std::size_t> const searches[] = {
        {"auditEvent=upload&auditText=%3CB%3E.tar", 1},
        {"auditText=none+such", 0},
        {"auditEvent=reboot", 1},
        {"auditText=" + std::string(65, 'a'), all.All(entries).size()},  // refused
    };
    for (auto const &[query, count] : searches) {
        Answer const found = browser.Get(std::string(advanced) + "?auditShow=Show&" + query);
        EXPECT_EQ(Html(found.body).Count(entries), count) << query;
        EXPECT_NE(found.body.find("selected: 5"), std::string::npos) << query;
    }
}

TEST(AuditTest, WithoutTheKeyThereIsNoneAndWithoutTheFileThePageSaysSo) {
    device::ReplacedFile const file(auditFile);
    std::filesystem::create_directory(auditFile);
    {
        device::Process process(device::Configuration(9108));
        Browser plain = device::Up("http://127.0.0.1:9108");
        plain.Post(advanced, Fields{{"submit", "Backup Configuration"}});
        EXPECT_EQ(Html(plain.Get(advanced).body).Count("//*[contains(@id,'audit')]"), 0U);
    }
    Html const html(Browser(device::address).Get(advanced).body);
    EXPECT_EQ(html.One("//div[@id='advanced_audit']/p"), "The audit log cannot be read.");
}

}  // namespace pages

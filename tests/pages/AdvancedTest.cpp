#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

constexpr char advancedPage[] = "/config/settings/advanced";
constexpr char rebootFlag[] = "/tmp/webconfig_reboot_flag";
constexpr char natSetup[] = "/etc/nat_setup.sh web_advanced";
constexpr char mismatch[] = "Passwords do not match";
constexpr char tooShort[] = "Invalid length; minimum 5";

using Lines = std::vector<std::string>;

class AdvancedTest : public testing::Test {
  protected:
    AdvancedTest() {
        device::Shell(
            "for key in ssh web icmp; do prm set system/remote/${key}_enabled no; done;"
            "prm set syslogd/persistent no; prm set -t int debug/seriald 0");
        device::TakeCommands();
    }
    ~AdvancedTest() override { std::filesystem::remove(rebootFlag); }

    Html Press(std::string const &submit, Fields fields = {}) {
        fields.emplace_back("submit", submit);
        return Html(browser.Post(advancedPage, fields).body);
    }
    Html SetPassword(std::string const &word, std::string const &password) {
        return Press("Save " + word + " Password",
                     {{"password" + word, password}, {"passwordConfirm" + word, password}});
    }
    static std::string Stored(std::string const &key) { return device::Shell("prm get " + key); }
    static bool IsRebootFlagged() { return std::filesystem::exists(rebootFlag); }
    static std::string OpenTab(Html const &page) {
        std::string const script = page.One("//body/following::script[1] | //html/script[1]");
        auto const at = script.find("selected: ");
        return script.substr(at + 10, 1);
    }

    device::KeptParameters const remote{"system/"};
    device::KeptParameters const log{"syslogd/"};
    device::KeptParameters const debug{"debug/"};
    device::KeptParameters const digest{"webman/"};
    device::RecordingProgram const nat{"/etc/nat_setup.sh"};
    Browser browser{device::address};
};

}  // namespace

TEST_F(AdvancedTest, ShowsTheStoredSwitches) {
    device::Shell("prm set system/remote/web_enabled yes; prm set -t int debug/seriald 1");
    Html const page(browser.Get(advancedPage).body);
    EXPECT_EQ(page.All("//div[@id='tabcontainer']/ul/li/a/@href"),
              (Lines{"#advanced_administration_tab", "#advanced_password_tab", "#advanced_configuration_tab",
                     "#advanced_syslog_tab", "#advanced_deployer_log_tab"}));
    EXPECT_EQ(
        page.All("//div[@id='advanced_administration']//input[@type='checkbox']/@name"),
        (Lines{"remoteSshEnabled", "remoteWebEnabled", "remoteIcmpEnabled", "persistentSysLog", "gsmDebug"}));
    EXPECT_EQ(page.All("//div[@id='advanced_administration']//input[@checked]/@name"),
              (Lines{"remoteWebEnabled", "gsmDebug"}));
    EXPECT_EQ(page.All("//option/@value"), (Lines{"erase_sensors", "erase_all", "erase_log", "erase_data"}));
    EXPECT_EQ(page.All("//div[@id='advanced_password']//input[@type='text']/@id"),
              (Lines{"cfg_adv_passwd_Web", "cfg_adv_passwd_cnfm_Web", "cfg_adv_passwd_Root",
                     "cfg_adv_passwd_cnfm_Root"}));
    EXPECT_EQ(page.Count("//div[@id='advanced_configuration']/form[@enctype='multipart/form-data']"), 1U);
    EXPECT_EQ(page.Count("//div[@id='advanced_configuration']//input[@type='checkbox' and @checked]"), 1U);
    EXPECT_EQ(page.Count("//div[@id='advanced_syslog_dynamic' and @class='command_output']/img"), 1U);
}

TEST_F(AdvancedTest, EachSwitchAloneIsStoredWithWhatBelongsToIt) {
    struct {
        char const *field;
        char const *key;
        char const *on;
        char const *off;
        bool runsNatSetup;
        bool needsReboot;
    } const cases[] = {
        {"remoteSshEnabled", "system/remote/ssh_enabled", "yes\n", "no\n", true, false},
        {"remoteWebEnabled", "system/remote/web_enabled", "yes\n", "no\n", true, false},
        {"remoteIcmpEnabled", "system/remote/icmp_enabled", "yes\n", "no\n", true, false},
        {"persistentSysLog", "syslogd/persistent", "yes\n", "no\n", false, true},
        {"gsmDebug", "debug/seriald", "5\n", "0\n", false, false},
    };
    for (auto const &c : cases) {
        Lines const expected = c.runsNatSetup ? Lines{natSetup} : Lines{};
        for (bool const on : {true, false}) {
            Html const page = Press("Save", on ? Fields{{c.field, "y"}} : Fields{});
            EXPECT_EQ(page.One(successMessage), saved) << c.field;
            EXPECT_EQ(page.All("//div[@id='advanced_administration']//input[@checked]/@name"),
                      on ? Lines{c.field} : Lines{});
            EXPECT_EQ(Stored(c.key), on ? c.on : c.off);
            EXPECT_EQ(device::TakeCommands(), expected) << c.field;
            EXPECT_EQ(IsRebootFlagged(), c.needsReboot) << c.field;
            EXPECT_EQ(page.Count("//div[@id='alertsBox']"), c.needsReboot ? 1U : 0U);
            std::filesystem::remove(rebootFlag);
        }
        EXPECT_EQ(Press("Save").One(successMessage), saved);
        EXPECT_EQ(device::TakeCommands(), Lines{}) << "nothing changed";
    }
}

TEST_F(AdvancedTest, AFailedWriteEndsTheSequenceAndRunsNothing) {
    device::RefusedKey const refused("system/remote/web_enabled");
    Html const page =
        Press("Save", {{"remoteSshEnabled", "y"}, {"remoteWebEnabled", "y"}, {"persistentSysLog", "y"}});
    EXPECT_EQ(page.One(failureMessage), notSaved);
    EXPECT_EQ(Stored("system/remote/ssh_enabled"), "yes\n");
    EXPECT_EQ(Stored("syslogd/persistent"), "no\n");
    EXPECT_FALSE(IsRebootFlagged());
    EXPECT_EQ(device::TakeCommands(), Lines{});
}

TEST_F(AdvancedTest, ErasingPartitions) {
    for (std::string const which : {"log", "data"}) {
        std::string const command = "/etc/erase/erase-partition " + which;
        {
            device::RecordingProgram const works("/etc/erase/erase-partition", "exit 0");
            Html const page = Press("ErasePartition", {{"eraseWhich", "erase_" + which}});
            EXPECT_EQ(page.One(successMessage),
                      "Success: The " + which + " partition was erased. Reboot now.");
            EXPECT_TRUE(IsRebootFlagged());
            std::filesystem::remove(rebootFlag);
        }
        device::RecordingProgram const fails("/etc/erase/erase-partition", "exit 3");
        Html const page = Press("ErasePartition", {{"eraseWhich", "erase_" + which}});
        EXPECT_EQ(page.One(failureMessage), "Error: Failure erasing " + which + " partition.");
        EXPECT_FALSE(IsRebootFlagged());
        EXPECT_EQ(device::TakeCommands(), (Lines{command, command}));
    }
    EXPECT_EQ(Press("ErasePartition", {{"eraseWhich", "erase_all"}}).One(failureMessage), invalid);
    EXPECT_EQ(device::TakeCommands(), Lines{});
}

TEST_F(AdvancedTest, ErasingTheConfiguration) {
    EXPECT_EQ(Press("Erase", {{"eraseType", "everything"}}).One(failureMessage), invalid);

    device::KeptParameters const components("component");
    device::Shell("prm set components/a 1; prm set component_types/b 2; prm set componentsX 3");
    EXPECT_EQ(Press("Erase", {{"eraseType", "erase_sensors"}}).One(successMessage), saved);
    EXPECT_EQ(device::Shell("prm list component"), "componentsX\n");
    EXPECT_FALSE(IsRebootFlagged());

    device::Shell("mkdir -p /home/root/config; cd /home/root/config; touch dump.rdb settings");
    EXPECT_EQ(Press("Erase", {{"eraseType", "erase_all"}}).One(successMessage), saved);
    EXPECT_EQ(device::Shell("ls /home/root/config"), "settings\n");
    EXPECT_TRUE(IsRebootFlagged());
    device::Shell("rm -r /home/root/config");
}

TEST_F(AdvancedTest, PasswordRules) {
    struct {
        char const *password;
        char const *confirmation;
        Lines errors;
        char const *webMessage;
        char const *rootMessage;
    } const cases[] = {
        {"secret", "Secret", {mismatch, mismatch}, invalid, notSaved},
        {"abcd", "abcd", {tooShort, tooShort}, invalid, invalid},
        {"", "secret", {tooShort}, invalid, invalid},
        {"secret", "", {tooShort}, invalid, invalid},
    };
    for (auto const &c : cases) {
        for (std::string const word : {"Web", "Root"}) {
            Html const page =
                Press("Save " + word + " Password",
                      {{"password" + word, c.password}, {"passwordConfirm" + word, c.confirmation}});
            EXPECT_EQ(page.One(failureMessage), word == "Web" ? c.webMessage : c.rootMessage) << c.password;
            EXPECT_EQ(page.All(fieldErrors), c.errors) << c.password;
            EXPECT_EQ(OpenTab(page), "1");
        }
    }
    EXPECT_EQ(
        Press("Save Web Password", {{"passwordWeb", ""}, {"passwordConfirmWeb", ""}}).One(failureMessage),
        invalid);
    EXPECT_EQ(
        Press("Save Root Password", {{"passwordRoot", ""}, {"passwordConfirmRoot", ""}}).One(successMessage),
        saved);
    EXPECT_EQ(device::TakeCommands(), Lines{});
}

TEST_F(AdvancedTest, PasswordsAreTakenAsTyped) {
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    for (std::string const password :
         {"plain-1", "two words", "a\"b$(touch /tmp/run)`c`", R"(back\slash\n\\end)", "it's; rm -rf x",
          "-n -e x", "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F!"}) {
        Html const page = SetPassword("Web", password);
        EXPECT_EQ(page.One(successMessage), saved) << password;
        EXPECT_EQ(page.Count("//input[@id='cfg_adv_passwd_Web' and @value]"), 0U) << "not shown again";
        device::WriteFile("/tmp/account", "admin:Orvane Configuration Tool:" + password);
        EXPECT_EQ(Stored("webman/digest/admin"), device::Shell("md5sum </tmp/account | cut -d' ' -f1"))
            << password;
        EXPECT_EQ(device::TakeCommands(), (Lines{"/usr/sbin/lighttpd_set_passwd.sh", natSetup}));
    }
    EXPECT_FALSE(std::filesystem::exists("/tmp/run"));
    std::filesystem::remove("/tmp/account");
}

TEST_F(AdvancedTest, TheRootPasswordIsHashedStoredAndSet) {
    std::string const before = device::Shell("grep ^root: /etc/shadow");
    for (std::string const password : {"it's \"$HOME\" \\n", "-5 Sterne", "--help"}) {
        Html const page = SetPassword("Root", password);
        EXPECT_EQ(page.One(successMessage), saved) << password;
        EXPECT_EQ(page.Count("//input[@id='cfg_adv_passwd_Root' and @value]"), 0U) << "not shown again";
        std::string hash = Stored("system/digest/root");
        hash.erase(hash.find_last_not_of('\n') + 1);
        EXPECT_EQ(device::Shell("getent shadow root | cut -d: -f2"), hash + '\n');
        device::WriteFile("/tmp/password", password);
        EXPECT_EQ(device::Shell("perl -e 'print crypt(<STDIN>, $ARGV[0])' '" + hash + "' </tmp/password"),
                  hash)
            << password;
        EXPECT_EQ(device::TakeCommands().back(), natSetup);
    }
    device::WriteFile("/tmp/password", before);
    device::Shell("cut -d: -f1,2 /tmp/password | chpasswd --encrypted; rm /tmp/password");
}

TEST_F(AdvancedTest, WithoutAHashOrAStoreNothingChangesAndTheEntriesStay) {
    constexpr char noWebHash[] = "Error: The web password could not be changed";
    constexpr char usage[] = "echo 'Usage: hash [PASSWORD]'";
    struct {
        std::string word;
        char const *program;
        char const *script;
        char const *message;
    } const cases[] = {
        {"Root", "/usr/bin/cryptpw", "exit 1", notSaved},
        {"Root", "/usr/bin/cryptpw", usage, notSaved},
        {"Root", "/usr/bin/cryptpw", "echo usage", notSaved},
        {"Root", "", "", notSaved},
        {"Web", "/usr/bin/md5sum", "exit 1", noWebHash},
        {"Web", "/usr/bin/md5sum", usage, noWebHash},
        {"Web", "", "", notSaved},
    };
    for (auto const &c : cases) {
        std::string const key = c.word == "Root" ? "system/digest/root" : "webman/digest/admin";
        std::string const stored = Stored(key);
        std::optional<device::RecordingProgram> standIn;
        std::optional<device::RefusedKey> refused;
        if (*c.program)
            standIn.emplace(c.program, c.script);
        else
            refused.emplace(key);
        Html const page = SetPassword(c.word, "secret");
        EXPECT_EQ(page.One(failureMessage), c.message) << c.word << c.script;
        EXPECT_EQ(page.One("//input[@id='cfg_adv_passwd_" + c.word + "']/@value"), "secret") << c.word;
        EXPECT_EQ(Stored(key), stored) << c.word << c.script;
        Lines const commands = device::TakeCommands();
        EXPECT_EQ(std::count(commands.begin(), commands.end(), natSetup), 0) << c.word << c.script;
    }
}

TEST_F(AdvancedTest, ValuesStandInCommandsAsTheyAreUnlessHardened) {
    device::RecordingProgram const cryptpw("/usr/bin/cryptpw", "exit 0");
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    device::KeptParameters const wifi("net/wifi/");
    device::Shell("prm set net/wifi/vendor laird; prm set net/wifi/region_code FCC");
    device::Process process(device::Configuration(9104));
    Browser plain("http://127.0.0.1:9104");
    ASSERT_TRUE(plain.WaitUntilUp());
    device::TakeCommands();
    struct {
        Browser &client;
        char const *end;  // of options
        char const *answer;
    } const cases[] = {{plain, "", "42"}, {browser, "-- ", "$((6 * 7))"}};
    for (auto const &c : cases) {
        auto const press = [&](std::string const &word, std::string const &password) {
            Fields const fields = {{"password" + word, password},
                                   {"passwordConfirm" + word, password},
                                   {"submit", "Save " + word + " Password"}};
            return Html(c.client.Post(advancedPage, fields).body);
        };
        EXPECT_EQ(press("Root", "-5 $((6 * 7))").One(failureMessage), notSaved);
        EXPECT_EQ(device::TakeCommands(), Lines{std::string("/usr/bin/cryptpw ") + c.end + "-5 " + c.answer});

        EXPECT_EQ(press("Web", "web $((6 * 7))").One(successMessage), saved);
        device::WriteFile("/tmp/account", std::string("admin:Orvane Configuration Tool:web ") + c.answer);
        EXPECT_EQ(Stored("webman/digest/admin"), device::Shell("md5sum </tmp/account | cut -d' ' -f1"));
        device::TakeCommands();

        c.client.Post("/config/regulatory/wifi", Fields{{"hidden_domain", "X$((6 * 7))"}, {"Save", "Save"}});
        EXPECT_EQ(device::TakeCommands(), Lines{std::string("/usr/sbin/lmu -r X") + c.answer});
    }
    std::filesystem::remove("/tmp/account");
}

TEST_F(AdvancedTest, TheBackupHasEveryParameterWithItsType) {
    device::KeptParameters const kept("0test/");
    device::Shell(
        "prm set -t int 0test/a 3; prm set 0test/b x; prm set -t float 0test/c 1.5;"
        "prm set 0test/d 'with \"quotes\" and\nlines'");
    Answer const answer = browser.Post(advancedPage, Fields{{"submit", "Backup Configuration"}});
    EXPECT_TRUE(answer.contentType.starts_with("text/plain"));
    EXPECT_NE(answer.headers.find("attachment; filename=\"Config_VD-0001-0042.txt\"\r\n"), std::string::npos)
        << answer.headers;
    EXPECT_TRUE(
        answer.body.starts_with("\"0test/a\",\"3\", i\n\"0test/b\",\"x\", s\n\"0test/c\",\"1.5\", f\n"
                                "\"0test/d\",\"with \"quotes\" and\nlines\", s\n"))
        << answer.body.substr(0, 200);
    EXPECT_NE(answer.body.find("\n\"net/hostname\",\""), std::string::npos);
    EXPECT_TRUE(answer.body.ends_with(" s\n") || answer.body.ends_with(" i\n"));
}

TEST_F(AdvancedTest, TheSystemLogIsTheOneInUse) {
    device::KeptParameters const kept("net/hostname");
    device::Shell("prm set net/hostname 'box\"\r\nX-Evil: 1'; mkdir -p /home/root/log");
    Answer const volatileLog = browser.Post(advancedPage, Fields{{"submit", "Download"}});
    EXPECT_NE(volatileLog.headers.find("attachment; filename=\"korbex_syslog_boxX-Evil: 1.txt\"\r\n"),
              std::string::npos)
        << volatileLog.headers;
    EXPECT_TRUE(device::ReadFile("/var/log/messages").starts_with(volatileLog.body));
    EXPECT_GT(volatileLog.body.size(), 0U);

    device::Shell("prm set syslogd/persistent yes");
    device::TemporaryFile const persistent("/home/root/log/messages", "one\ntwo\n");
    EXPECT_EQ(browser.Post(advancedPage, Fields{{"submit", "Download"}}).body, "one\ntwo\n");
    device::Shell("rm /home/root/log/messages");
    Answer const missing = browser.Post(advancedPage, Fields{{"submit", "Download"}});
    EXPECT_EQ(missing.status, 200);
    EXPECT_EQ(missing.body, "");
}

TEST_F(AdvancedTest, TheDeployerLogIsSentOnceOrTheToolIsQuoted) {
    {
        device::RecordingProgram const tool("/usr/bin/logdeployer",
                                            "echo first >/tmp/deployer_1.log; echo /tmp/deployer_1.log");
        Answer const answer = browser.Post(advancedPage, Fields{{"submit", "Download log"}});
        EXPECT_EQ(answer.body, "first\n");
        EXPECT_NE(answer.headers.find("attachment; filename=\"deployer_1.log\"\r\n"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists("/tmp/deployer_1.log"));
    }
    device::RecordingProgram const tool("/usr/bin/logdeployer", "echo 'no <log> here'; exit 1");
    Html const page = Press("Download log");
    EXPECT_EQ(page.One(failureMessage), "no <log> here");
    EXPECT_EQ(OpenTab(page), "4");
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "no <log> here"));
}

TEST_F(AdvancedTest, OtherButtonsDoNothing) {
    for (char const *submit : {"", "Reboot", "save"}) {
        Html const page = Press(submit);
        EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Advanced Configuration Options ");
        EXPECT_EQ(page.Count(successMessage), 0U);
    }
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "Unknown submit received"));
    EXPECT_EQ(device::TakeCommands(), Lines{});
}

}  // namespace pages

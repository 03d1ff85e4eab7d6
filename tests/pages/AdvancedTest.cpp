#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char natSetup[] = "/etc/nat_setup.sh web_advanced";
constexpr char checkedSwitches[] = "//div[@id='advanced_administration']//input[@checked]/@name";

class AdvancedTest : public PageTest {
  protected:
    AdvancedTest()
        : PageTest({"/config/settings/advanced",
                    "",
                    {{"system/remote/ssh_enabled", "no"},
                     {"system/remote/web_enabled", "no"},
                     {"system/remote/icmp_enabled", "no"},
                     {"syslogd/persistent", "no"},
                     {"debug/seriald", "0, i"}}}) {}

    static Fields Password(std::string const &word, std::string const &password) {
        return {{"password" + word, password},
                {"passwordConfirm" + word, password},
                {"submit", "Save " + word + " Password"}};
    }
    Answer Download(std::string const &submit) { return browser.Post(page.path, Fields{{"submit", submit}}); }

    device::RecordingProgram const nat{"/etc/nat_setup.sh"};
};

}  // namespace

TEST_F(AdvancedTest, ShowsTheStoredSwitches) {
    Html const html = Show({{"system/remote/web_enabled", "yes"}, {"debug/seriald", "1, i"}});
    EXPECT_EQ(html.All(checkedSwitches), (Strings{"remoteWebEnabled", "gsmDebug"}));
    EXPECT_EQ(html.All("//div[@id='advanced_administration']//option/@value"),
              (Strings{"erase_sensors", "erase_all", "erase_log", "erase_data"}));
}

TEST_F(AdvancedTest, EachSwitchAloneIsStoredWithWhatBelongsToIt) {
    struct {
        char const *field;
        char const *key;
        char const *on;
        char const *off;
        Strings commands;
        bool reboot;
    } const cases[] = {
        {"remoteSshEnabled", "system/remote/ssh_enabled", "yes", "no", {natSetup}, false},
        {"remoteWebEnabled", "system/remote/web_enabled", "yes", "no", {natSetup}, false},
        {"remoteIcmpEnabled", "system/remote/icmp_enabled", "yes", "no", {natSetup}, false},
        {"persistentSysLog", "syslogd/persistent", "yes", "no", {}, true},
        {"gsmDebug", "debug/seriald", "5, i", "0, i", {}, false},
    };
    Fields const off = {{"submit", "Save"}};
    for (auto const &c : cases) {
        Fields const on = With(off, {{c.field, "y"}});
        Case switched = {.written = {{c.key, c.on}}, .commands = c.commands, .reboot = c.reboot};
        EXPECT_EQ(Expect(on, switched).All(checkedSwitches), Strings{c.field});
        switched.before = {{c.key, c.on}};
        switched.written = {{c.key, c.off}};
        EXPECT_EQ(Expect(off, switched).All(checkedSwitches), Strings());
    }
    Expect({{"remoteSshEnabled", "y"}, {"submit", "Save"}},
           {.before = {{"system/remote/ssh_enabled", "yes"}}});
    StopsAt(With(off, {{"remoteSshEnabled", "y"}, {"remoteWebEnabled", "y"}}),
            {{"system/remote/web_enabled", {{"system/remote/ssh_enabled", "yes"}}}});
}

TEST_F(AdvancedTest, ErasingPartitions) {
    Fields const erase = {{"eraseWhich", "erase_log"}, {"submit", "ErasePartition"}};
    Strings const command = {"/etc/erase/erase-partition log"};
    {
        device::RecordingProgram const works("/etc/erase/erase-partition", "exit 0");
        Expect(erase, {.success = "Success: The log partition was erased. Reboot now.",
                       .commands = command,
                       .reboot = true});
        Expect(erase, {.fields = {{"eraseWhich", "erase_data"}},
                       .success = "Success: The data partition was erased. Reboot now.",
                       .commands = {"/etc/erase/erase-partition data"},
                       .reboot = true});
    }
    device::RecordingProgram const fails("/etc/erase/erase-partition", "exit 3");
    Expect(erase, {.failure = "Error: Failure erasing log partition.", .commands = command});
    Refuses(erase, {{"eraseWhich", "erase_all", {}}});
}

TEST_F(AdvancedTest, ErasingTheConfiguration) {
    std::string const deployer = "/opt/applications/telemetry/etc/rcS.d/deployer";
    Fields const erase = {{"eraseType", "erase_sensors"}, {"submit", "Erase"}};
    Refuses(erase, {{"eraseType", "everything", {}}});
    Expect(erase,
           {.before = {{"componentsX", "3"}},
            .written = {{"components/pump", none},
                        {"components/tank", none},
                        {"component_types/pump", none},
                        {"connections/pump/tank", none},
                        {"deployment/name", none}},
            .commands = {deployer + " stop", "/usr/bin/supvis --remove deployer", deployer + " start",
                         "/usr/bin/supvis --add deployer --cmd /opt/applications/telemetry/bin/deployer"}});
    device::WriteFile("/home/root/config/dump.rdb", "");
    device::WriteFile("/home/root/config/settings", "");
    Expect(erase, {.fields = {{"eraseType", "erase_all"}}, .reboot = true});
    EXPECT_EQ(device::Shell("ls /home/root/config; rm -r /home/root/config"), "settings\n");
}

TEST_F(AdvancedTest, PasswordRules) {
    std::string const mismatch = "Passwords do not match";
    std::string const tooShort = "Invalid length; minimum 5";
    struct {
        char const *word;
        char const *password;
        char const *confirmation;
        Strings errors;
        char const *failure;
    } const cases[] = {
        {"Web", "secret", "Secret", {mismatch, mismatch}, invalid},
        {"Root", "secret", "Secret", {mismatch, mismatch}, notSaved},
        {"Web", "abcd", "abcd", {tooShort, tooShort}, invalid},
        {"Root", "abcd", "abcd", {tooShort, tooShort}, invalid},
        {"Web", "", "", {tooShort, tooShort}, invalid},
        {"Root", "", "secret", {tooShort}, invalid},
    };
    for (auto const &[word, password, confirmation, errors, failure] : cases)
        Expect(Password(word, password), {.fields = {{std::string("passwordConfirm") + word, confirmation}},
                                          .failure = failure,
                                          .errors = errors,
                                          .tab = "1"});
    Expect(Password("Root", ""), {});
}

TEST_F(AdvancedTest, PasswordsAreTakenAsTyped) {
    constexpr char alert[] = "//div[@id='defaultPasswordAlert']/a[contains(@href,'#advanced_password_tab')]";
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    EXPECT_EQ(Html(browser.Get("/config/").body).Count(alert), 1U) << "of the delivered password";
    for (std::string const password :
         {"two words", "a\"b$(touch /tmp/run)`c`", R"(it's; back\slash\n\\end)", "-n -e \xC3\xA4"}) {
        device::ReplacedFile const account("/tmp/account", "admin:Orvane Configuration Tool:" + password);
        std::string const md5 = device::Shell("md5sum </tmp/account | head -c 32");
        std::string const sha256 = device::Shell("sha256sum </tmp/account | head -c 64");
        Html const html =
            Expect(Password("Web", password),
                   {.written = {{"webman/digest/admin", md5}, {"webman/digest256/admin", md5 + ':' + sha256}},
                    .commands = {"/usr/sbin/lighttpd_set_passwd.sh", natSetup},
                    .shown = {{"cfg_adv_passwd_Web", ""}}});
        EXPECT_EQ(html.Count(alert), 0U);
    }
    EXPECT_FALSE(std::filesystem::exists("/tmp/run"));
}

TEST_F(AdvancedTest, TheRootPasswordIsHashedStoredAndSet) {
    device::ReplacedFile const before("/tmp/root_before", device::Shell("grep ^root: /etc/shadow"));
    for (std::string const password : {"it's \"$HOME\" \\n", "--help"}) {
        Html const html(browser.Post(page.path, Password("Root", password)).body);
        EXPECT_EQ(html.One(successMessage), saved) << password;
        EXPECT_EQ(html.Value("cfg_adv_passwd_Root"), "") << "not shown again";
        std::string hash = device::Shell("prm get system/digest/root");
        hash.erase(hash.find_last_not_of('\n') + 1);
        EXPECT_EQ(device::Shell("getent shadow root | cut -d: -f2"), hash + '\n');
        device::ReplacedFile const file("/tmp/password", password);
        EXPECT_EQ(device::Shell("perl -e 'print crypt(<STDIN>, $ARGV[0])' '" + hash + "' </tmp/password"),
                  hash)
            << password;
        EXPECT_EQ(device::TakeCommands().back(), natSetup);
    }
    device::Shell("cut -d: -f1,2 /tmp/root_before | chpasswd --encrypted");
}

TEST_F(AdvancedTest, WithoutAHashOrAStoreNothingChangesAndTheEntriesStay) {
    constexpr char program[] = "/usr/bin/cryptpw";
    for (std::string const script : {"exit 1", "echo 'Usage: hash [PASSWORD]'"}) {
        device::RecordingProgram const standIn(program, script);
        Expect(Password("Root", "secret"),
               {.failure = notSaved, .commands = {program}, .shown = {{"cfg_adv_passwd_Root", "secret"}}});
    }
    device::RecordingProgram const setPassword("/usr/sbin/lighttpd_set_passwd.sh", "exit 0");
    device::RecordingProgram const cryptpw(program, "echo '$1$salt$EqhFEy2TYNcSUNyC9XjMy1'");
    Expect(Password("Web", "secret"), {.refused = "webman/digest256/admin",
                                       .failure = notSaved,
                                       .shown = {{"cfg_adv_passwd_Web", "secret"}}});
    Expect(Password("Root", "secret"), {.refused = "system/digest/root",
                                        .failure = notSaved,
                                        .commands = {program},
                                        .shown = {{"cfg_adv_passwd_Root", "secret"}}});
}

TEST_F(AdvancedTest, TheBackupHasEveryParameterWithItsType) {
    device::Shell(
        "prm set -t int 0test/a 3; prm set 0test/b x; prm set -t float 0test/c 1.5;"
        "prm set 0test/d 'with \"quotes\" and\nlines'");
    Answer const answer = Download("Backup Configuration");
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
    Set({{"net/hostname", "box\"\r\nX-Evil: 1"}});
    Answer const volatileLog = Download("Download");
    EXPECT_NE(volatileLog.headers.find("attachment; filename=\"korbex_syslog_boxX-Evil: 1.txt\"\r\n"),
              std::string::npos)
        << volatileLog.headers;
    EXPECT_TRUE(device::ReadFile("/var/log/messages").starts_with(volatileLog.body));
    EXPECT_GT(volatileLog.body.size(), 0U);

    Set({{"syslogd/persistent", "yes"}});
    device::ReplacedFile const persistent("/home/root/log/messages", "one\ntwo\n");
    EXPECT_EQ(Download("Download").body, "one\ntwo\n");
}

TEST_F(AdvancedTest, DownloadsLeaveWorkersToPages) {
    device::Process const process(device::Configuration(
        9121,
        R"("downloads":1,"history":{"file":"/tmp/h/history.db"},"trial":{"file":"/tmp/h/trial","seconds":9},)"));
    Browser other = device::Up("http://127.0.0.1:9121");
    Set({{"syslogd/persistent", "yes"}});
    device::ReplacedFile const log("/home/root/log/messages", "");
    device::Shell("cd /home/root/log && rm messages && mkfifo messages");
    auto slow = std::async(std::launch::async, [this] {
        return Browser("http://127.0.0.1:9121").Post(page.path, Fields{{"submit", "Download"}}).body;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    Answer const refused = other.Post(page.path, Fields{{"submit", "Backup Configuration"}});
    EXPECT_EQ(refused.status, 503);
    EXPECT_NE(refused.headers.find("Retry-After: 10\r\n"), std::string::npos) << refused.headers;
    EXPECT_EQ(other.Get(page.path).status, 200);
    device::Shell("echo one >/home/root/log/messages");
    EXPECT_EQ(slow.get(), "one\n");
    EXPECT_EQ(other.Post(page.path, Fields{{"submit", "Backup Configuration"}}).status, 200);
}

TEST_F(AdvancedTest, TheDeployerLogIsSentOnceOrTheToolIsQuoted) {
    {
        device::RecordingProgram const tool("/usr/bin/logdeployer",
                                            "echo first >/tmp/deployer_1.log; echo /tmp/deployer_1.log");
        Answer const answer = Download("Download log");
        EXPECT_EQ(answer.body, "first\n");
        EXPECT_NE(answer.headers.find("attachment; filename=\"deployer_1.log\"\r\n"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists("/tmp/deployer_1.log"));
    }
    device::RecordingProgram const tool("/usr/bin/logdeployer", "echo 'no <log> here'; exit 1");
    Expect({{"submit", "Download log"}}, {.failure = "no <log> here",
                                          .commands = {"/usr/bin/logdeployer"},
                                          .tab = "4",
                                          .logged = "no <log> here"});
}

TEST_F(AdvancedTest, OtherButtonsDoNothing) {
    Expect({{"submit", "save"}}, {.success = "", .logged = "Unknown submit received"});
}

}  // namespace pages

#include <filesystem>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char uploads[] = "/var/lib/webconfig/uploads";
constexpr char items[] = "//form[@id='restore_form']//li";
constexpr char restored[] = "The backup is restored.";

class RestoreTest : public PageTest {
  protected:
    RestoreTest()
        : PageTest({"/config/settings/advanced",
                    "",
                    {{"net/hostname", "mast \"7\""},
                     {"gprs/password", "hunter22"},
                     {"net/portfwd/tcp/08443/d_port", none}}}) {
        MakeFile("one\ntwo\n");
    }

    static void MakeFile(std::string const &content) {
        device::WriteFile("/tmp/content", content);
        device::Shell("prm addfile 0test/file /tmp/content; rm /tmp/content");
    }
    std::string Backup() { return browser.Post(page.path, Fields{{"submit", "Backup Configuration"}}).body; }
    Answer Upload(std::string const &text, std::string const &name = "Config_VD-0001-0042.txt") {
        return browser.PostFile(page.path, {"configurationFile", name, "text/plain", text},
                                {{"submit", "Restore Configuration"}});
    }
    /// Presses a button of the form that an upload was answered with.
    Html Press(Html const &asked, std::string const &button, Fields fields = {}) {
        for (std::string const name : {"backup", "backupName", "backupFormat"})
            fields.emplace_back(name, asked.Value("//form[@id='restore_form']//input[@name='" + name + "']"));
        fields.emplace_back("submit", button);
        return Html(browser.Post(page.path, fields).body);
    }
    static bool IsKept() { return !std::filesystem::is_empty(uploads); }
    Html History() { return Html(browser.Get("/config/settings/history").body); }
};

}  // namespace

TEST_F(RestoreTest, ABackupIsShownAndAppliedAsOneSetOnTrial) {
    std::string const backup = Backup();
    device::Settings const then = device::KeptStore::All();
    device::Shell(
        "prm set net/hostname mast-8; prm set gprs/password other; prm del debug/seriald;"
        "prm set -t int net/portfwd/tcp/08443/d_port 443; prm set 0test/file x;"
        "prm set components/pump stopped; prm del components/tank; prm set 0test/new y");
    device::TakeCommands();
    device::Settings const before = device::KeptStore::All();

    Answer const shown = Upload(backup, "/tmp/Config_VD-7 (1).txt");
    Html const html(shown.body);
    std::string const arrow = " \xE2\x86\x92 ";
    EXPECT_EQ(
        html.All("//form[@id='restore_form']//*[self::h4 or self::li]"),
        (Strings{"Changed", "GPRS password: changed", "Device name: mast-8" + arrow + "mast \"7\"", "Added",
                 "Cellular debug level: none" + arrow + "0", "Gone: not in the backup, and deleted",
                 "TCP 08443 forwarded to port: 443" + arrow + "none", "Not settings of these pages",
                 " 0test/file: x" + arrow + "one\ntwo\n", " components/pump: stopped" + arrow + "started",
                 " components/tank: none" + arrow + "started", " 0test/new: y" + arrow + "none"}));
    EXPECT_EQ(html.One("//p[@class='caution']"),
              "By its name it is a backup of the device VD-7. This one is VD-0001-0042.");
    EXPECT_EQ(html.Count("//form[@id='restore_form']//input[@checked]"), 0U);
    EXPECT_EQ(shown.body.find("hunter22"), std::string::npos);
    EXPECT_EQ(device::KeptStore::Changes(before), Settings());
    EXPECT_EQ(device::TakeCommands(), Strings());
    EXPECT_EQ(device::Shell(std::string("stat -c %a ") + uploads + "/*"), "600\n");

    Html const done =
        Press(html, "Apply Backup", {{"unknown", "0test/file"}, {"unknown", "components/tank"}});
    EXPECT_EQ(done.One(successMessage), restored);
    EXPECT_EQ(device::TakeCommands(), Strings{"/etc/nat_setup.sh web_forwarding"});
    EXPECT_EQ(device::KeptStore::Changes(then), (Settings{{"0test/file", "\"one\\ntwo\\n\", s"},
                                                          {"0test/new", "\"y\", s"},
                                                          {"components/pump", "\"stopped\", s"}}));
    EXPECT_EQ(done.Count("//form[@id='trialBox']//input[@value='Keep them']"), 1U);
    EXPECT_FALSE(IsKept());
    EXPECT_EQ(History().One("//div[@class='history_set'][1]/p"), "Restore of Config_VD-7 (1).txt");
    EXPECT_EQ(History().Count("//div[@class='history_set'][1]//ul/li"), 6U);
}

TEST_F(RestoreTest, AFileParameterStaysAFileAndARebootIsStartedWhereItIsAskedFor) {
    std::string const backup = Backup();
    EXPECT_EQ(Html(Upload(backup).body).One(successMessage),
              "Nothing to restore: everything is as it is in the backup.");
    EXPECT_FALSE(IsKept());
    MakeFile("three\n");
    Html const asked(Upload(backup).body);
    device::ReplacedFile const flag("/tmp/webconfig_reboot_flag", "");
    device::RecordingProgram const reboot("/usr/sbin/reboot", device::tellStart);
    Html const waiting = Press(asked, "Apply Backup", {{"unknownAll", "y"}, {"rebootAfterRestore", "y"}});
    EXPECT_EQ(waiting.One(anyMessage), "Please wait..rebooting");
    EXPECT_NE(device::Start(), "");
    EXPECT_TRUE(device::Shell("prm export 0test/file").starts_with("\"0test/file\",\"one\\ntwo\\n\", file "));
    EXPECT_EQ(History().One("//div[@class='history_set'][1]//ul/li"),
              "0test/file: three\n \xE2\x86\x92 one\ntwo\n");
}

TEST_F(RestoreTest, NothingIsAppliedOfWhatCannotBeReadOrMayNotBeStored) {
    std::string const good = "\"0test/a\",\"1\", s\n";
    std::pair<std::string, std::string> const cases[] = {
        {good + "\"net/hostname\",\"a\n\"net/mtu\",\"b\", s\n",
         "line 3: it may begin a parameter, or go on with the value before it"},
        {good + "\"net/hostname\",\"a\nb\", s\n",
         "\"Device name\" must not have line ends or control characters"},
    };
    for (auto const &[text, reason] : cases) {
        std::string const failure = "The backup was not taken: " + reason;
        ExpectAnswer(reason, [&text = text, this] { return Upload(text); },
                     {.failure = "Error: " + failure, .commands = {}, .tab = "2", .logged = failure});
        EXPECT_FALSE(IsKept());
    }
    for (std::string const token : {"", "../prm.db", "0123456789abcdef"})
        Expect({{"submit", "Apply Backup"}, {"backup", token}},
               {.failure =
                    "Error: The backup was not taken: The device does not have it any more. Upload it again",
                .tab = "2"});
}

TEST_F(RestoreTest, AnExportIsTakenAndWhatItIsIsAskedWhereThatMatters) {
    device::Shell("prm del 0test/file; prm set net/wifi/client/eap/identity 'FIELD\\robert'");
    Html const asked(Upload(device::Shell("prm export")).body);
    EXPECT_EQ(asked.Count("//form[@id='restore_form']//button"), 2U);
    EXPECT_EQ(Press(asked, "Apply Backup").Count("//form[@id='restore_form']//button"), 2U);
    device::Shell("prm set net/hostname other");
    Html const shown = Press(asked, "Read as Export");
    EXPECT_EQ(shown.Count(items), 1U);
    EXPECT_EQ(Press(shown, "Apply Backup").One(successMessage), restored);
    EXPECT_EQ(device::Shell("prm get net/hostname"), "mast \"7\"\n");

    Html const again(Upload(device::Shell("prm export")).body);
    EXPECT_TRUE(IsKept());
    Press(again, "Discard Backup");
    EXPECT_FALSE(IsKept());
}

TEST_F(RestoreTest, WithoutItsKeyOrAHistoryThatPartIsDisabled) {
    for (std::string const keys : {R"("history":{"file":"/tmp/restore.db"},)", R"("restore":true,)"}) {
        SCOPED_TRACE(keys);
        device::Process process(device::Configuration(9117, keys));
        Browser plain = device::Up("http://127.0.0.1:9117");
        Html const html(plain.Post(page.path, Fields{{"submit", "Restore Configuration"}}).body);
        EXPECT_EQ(
            html.All("//div[@id='advanced_configuration']//tr[.//@disabled]/th"),
            (Strings{"Configuration file ", "Reboot afterwards ", "Restore Configuration (not available) "}));
        EXPECT_TRUE(process.WaitForLog("Unknown submit received"));
        EXPECT_EQ(device::Count(process.Log(), "webconfig.restore does nothing"),
                  keys.starts_with("\"restore") ? 1U : 0U);
    }
}

}  // namespace pages

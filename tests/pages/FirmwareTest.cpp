#include <signal.h>

#include <filesystem>
#include <future>
#include <optional>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

namespace fs = std::filesystem;

constexpr char statusPage[] = "/config/settings/firmware_upgrade_status";
constexpr char toolLock[] = "/tmp/fwtool_6v1Znb.lock";
constexpr char toolStatus[] = "/tmp/fwtool_status.txt";
constexpr char uploads[] = "/var/lib/webconfig/uploads";

constexpr char wrongLength[] = "Invalid file length; minimum 1, maximum 314572800 bytes.";
constexpr char staticFailure[] =
    "//div[contains(@class,'failure') and contains(@class,'static') and contains(@class,'form_result_msg')]";

std::string const magic = "\xD0\x0D\xFE\xED";
std::string const octets = "application/octet-stream";

/// The saved images, in memory or on disk.
Strings Images() {
    Strings images;
    for (auto const &entry : fs::directory_iterator("/tmp")) {
        if (entry.path().filename().string().starts_with("firmware"))
            images.push_back(entry.path());
    }
    return images;
}

bool IsProgress(Answer const &answer) {
    Html const html(answer.body);
    return answer.status == 200 && html.One("//h2[@id='config_page_title']") == " Firmware " &&
           html.Count("//div[@class='progress_block hiddenOnLoad']//div[@id='progressbar']") == 1 &&
           html.Count("//form") == 0;
}

class FirmwareTest : public PageTest {
  protected:
    FirmwareTest() : PageTest({"/config/settings/firmware", "", {}}) {}

    Answer Send(std::string const &content, std::string const &name, std::string const &type = octets) {
        return browser.PostFile(page.path, {"fwupload", name, type, content});
    }
};

/// Where the device has no firmware tool of its own, or the test must not run it.
constexpr char versionTool[] = "/usr/bin/ubi_get_volume_versions.sh";
constexpr char firmwareTool[] = "/usr/bin/fwtool";

}  // namespace

TEST_F(FirmwareTest, ShowsVersionsAndTheToolsStatus) {
    device::RecordingProgram const versions(versionTool, "echo '1.2.3 <rootfs> & more'");
    device::RecordingProgram const tool(firmwareTool, "echo tool says \"$@\"");
    Html const html(browser.Get(page.path).body);
    std::string const form = "//div[@id='component_config']/form[@enctype='multipart/form-data']";
    EXPECT_EQ(html.One(form + "/@action"), page.path);
    EXPECT_EQ(html.One(form + "//tr[th='Firmware Version(s)']/td/pre"), "1.2.3 <rootfs> & more\n");
    EXPECT_EQ(html.All("//div[@id='component_status']//pre"),
              (Strings{"1.2.3 <rootfs> & more\n", "tool says -s\n"}));
    EXPECT_EQ(html.Count(anyMessage), 0U);
}

TEST_F(FirmwareTest, UnknownVersionsAndAFailedUpgradeAreTold) {
    device::RecordingProgram const none(versionTool, "true");
    Html const unknown(browser.Get(page.path).body);
    EXPECT_EQ(unknown.One("//div[@id='component_config']//pre"), "n/a");
    EXPECT_EQ(unknown.One(staticFailure), "Unknown firmware version(s)");

    Html const failed(browser.Get(page.path + "?type=failedUpgrade").body);
    EXPECT_EQ(failed.One(staticFailure), "Firmware upgrade failed");
    EXPECT_EQ(failed.Count("//input[@type='file']"), 1U);
}

TEST_F(FirmwareTest, RefusesWhatIsNoImageAndKeepsNoFile) {
    std::string const noImage = "This is not a firmware image; its name ends in .bin or .itb";
    Strings const resumed = {versionTool, std::string(firmwareTool) + " -s",
                             "/usr/bin/supvis --resume deployer"};
    std::pair<std::string, char const *> const cases[] = {
        {magic, "image.tar"},
        {magic, "image.bin.exe"},
        {"x" + magic, "image.bin"},
        {"", ""},
    };
    for (auto const &[content, name] : cases)
        ExpectAnswer(
            name, [&] { return Send(content, name); },
            {.failure = invalid, .errors = {content.empty() ? wrongLength : noImage}, .commands = resumed});
    ExpectAnswer(
        "text", [&] { return Send(magic, "image.itb", "text/plain"); },
        {.failure = notSaved, .commands = resumed, .logged = "Unrecognized firmware MIME type text/plain"});
    EXPECT_EQ(Images(), Strings());
    // Files of a request go with the request, which ends a little after its answer.
    EXPECT_TRUE(device::WaitUntil(2, [] { return fs::is_empty(uploads); }));
}

TEST_F(FirmwareTest, WhileTheToolHoldsItsLockEveryPageIsTheProgress) {
    Answer const idle = browser.Get(statusPage);
    EXPECT_EQ(idle.status, 302);
    EXPECT_EQ(idle.location, std::string(device::address) + page.path);

    device::ReplacedFile const file(toolLock, "");
    EXPECT_EQ(browser.Get(statusPage).status, 302) << "the file alone is no upgrade";
    device::HeldLock lock(toolLock);
    for (auto const &path : Strings{"/config/", page.path, statusPage, "/config/nothing"})
        EXPECT_TRUE(IsProgress(browser.Get(path))) << path;
    EXPECT_TRUE(IsProgress(Send(magic, "image.bin")));
    EXPECT_EQ(Images(), Strings()) << "an upgrade runs already";
    lock.Release();
    EXPECT_FALSE(IsProgress(browser.Get("/config/")));
}

namespace {

/// A process that may be stopped for an upgrade, with a tool that tells how it was started.
class UpgradeTest : public FirmwareTest {
  protected:
    explicit UpgradeTest(std::string const &keys = "") {
        process.emplace(device::Configuration(9103, keys), Strings{"MOUNT_DIR="});
        browser = device::Up("http://127.0.0.1:9103");
    }
    ~UpgradeTest() override {
        for (auto const &image : Images())
            fs::remove(image);
    }

    device::RecordingProgram tool{firmwareTool,
                                  std::string("[ \"$1\" = --upgrade ] || exit\n") + device::tellStart};
    std::optional<device::Process> process;
};

}  // namespace

TEST_F(UpgradeTest, AnImageIsSavedAndTheServiceReloadsToStartTheUpgrade) {
    device::ReplacedFile const leftover(toolStatus, "{ 'state' : 'done' }\n");
    device::TakeCommands();
    std::string const content = magic + std::string("\0 content \r\n--x", 16);
    EXPECT_TRUE(IsProgress(Send(content, "C:\\images\\image.itb")));
    EXPECT_FALSE(fs::exists(toolStatus)) << "the state of an earlier upgrade";

    EXPECT_EQ(device::Start(), "own session, 0 signals, 0 sockets, boot 1\n");
    ASSERT_EQ(Images().size(), 1U);
    std::string const image = Images()[0];
    EXPECT_EQ(device::ReadFile(image), content);
    EXPECT_EQ(device::Shell("stat -c %a " + image), "600\n");
    EXPECT_EQ(device::TakeCommands().back(), std::string(firmwareTool) + " --upgrade " + image +
                                                 " --delete --create-ubi-volume --unmount-ubi-volume");

    EXPECT_TRUE(process->WaitForLog("forced reload"));
    EXPECT_TRUE(browser.WaitUntilUp());
    EXPECT_FALSE(fs::exists("/tmp/webconfig_fwsugd_flag"));
    EXPECT_FALSE(fs::exists("/tmp/webconfig_freload_flag"));
}

TEST_F(UpgradeTest, AStopBeforeTheUpgradeBeginsKeepsNoImage) {
    // Keeps the service from its end until the signal has come.
    device::RecordingProgram const hang("/usr/bin/supvis", "until rmdir /tmp/signalled; do sleep .1; done");
    device::TakeCommands();
    auto const prepared = std::async(
        std::launch::async, [] { return Browser("http://127.0.0.1:9103").Call("prepare_fw_upgrade"); });
    ASSERT_TRUE(device::WaitForText("/var/log/device-commands", "supvis --suspend deployer\n"));
    EXPECT_TRUE(IsProgress(Send(magic, "image.itb")));
    EXPECT_EQ(Images().size(), 1U);
    process->Signal(SIGTERM);
    fs::create_directory("/tmp/signalled");
    EXPECT_EQ(process->Wait(10), 0);
    EXPECT_NE(process->Log().find("The firmware upgrade that was asked for is dropped"), std::string::npos);
    EXPECT_EQ(Images(), Strings());
    EXPECT_FALSE(fs::exists("/tmp/webconfig_fwsugd_flag"));
}

TEST_F(UpgradeTest, AnImageThatCannotBeSavedLeavesTheServiceAsItWas) {
    for (int i = 0; i < 10000; ++i)
        fs::create_symlink("/tmp/victim", "/tmp/firmware" + std::to_string(i));
    Html const html(Send(magic, "image.bin").body);
    EXPECT_EQ(Images().size(), 10000U);
    device::Shell("find /tmp -name 'firmware*' -delete");
    EXPECT_FALSE(fs::exists("/tmp/victim"));
    EXPECT_EQ(html.One("//div[contains(@class,'failure')]"), notSaved);
    EXPECT_TRUE(process->WaitForLog("Firmware image not saved: "));
    EXPECT_FALSE(fs::exists("/tmp/webconfig_fwsugd_flag"));
    EXPECT_EQ(browser.Get("/config/").status, 200);
    EXPECT_EQ(process->Wait(0), -1) << "still running";
}

namespace {

/// A device that takes only images that its key "maker" has signed.
class JudgedImageTest : public UpgradeTest {
  protected:
    JudgedImageTest() : UpgradeTest(R"("security":{"firmware_verdict":true,"signed_firmware":true},)") {
        device::Shell(
            "mkdir " + folder + " && cd " + folder +
            " && openssl genpkey -algorithm ed25519 -out key && openssl pkey -in key -pubout -out public");
    }
    ~JudgedImageTest() override { fs::remove_all(folder); }

    std::string Make(std::string const &options) const {
        device::Shell(PROJECT_SOURCE_DIR "/device/make-image --size 200000 7.1 " + folder + "/image " +
                      options);
        return device::ReadFile(folder + "/image");
    }

    std::string const folder = "/tmp/judged";
    std::string const sign = "--sign " + folder + "/key";
};

constexpr char findings[] = "//div[@id='firmware_verdict']//td";

}  // namespace

TEST_F(JudgedImageTest, WhatIsNotForTheDeviceGoesAndTheRestIsToldAndInstalled) {
    device::RecordingProgram const versions(versionTool, "echo 'rootfs0: 7.0.9 (running)'");
    device::ReplacedFile const key("/etc/webconfig/firmware.d/maker.pem",
                                   device::ReadFile(folder + "/public"));
    std::pair<std::string, char const *> const refused[] = {
        {"", "The image is not signed. This device takes only images that are signed with one of its keys."},
        {sign + " --platform brq3", "The image is for another platform: brq3. This device is a brq4."},
    };
    for (auto const &[options, failure] : refused) {
        device::TakeCommands();
        Html const html(Send(Make(options), "a b.itb").body);
        EXPECT_EQ(html.One(staticFailure), failure);
        EXPECT_EQ(html.All(findings).at(0), "a b.itb");
        EXPECT_TRUE(process->WaitForLog("Firmware image a%20b.itb refused. " + std::string(failure)));
        EXPECT_EQ(Images(), Strings());
        EXPECT_FALSE(fs::exists("/tmp/webconfig_fwsugd_flag"));
        EXPECT_EQ(device::TakeCommands().back(), "/usr/bin/supvis --resume deployer");
    }

    Answer const answer = Send(Make(sign), "<b>.itb");
    EXPECT_TRUE(IsProgress(answer));
    std::string const digest = device::Shell("sha256sum <" + folder + "/image | cut -c1-64 | tr -d '\\n'");
    EXPECT_EQ(Html(answer.body).All(findings),
              (Strings{"<b>.itb", "200080 bytes", digest, "7.1, newer than the running 7.0.9", "brq4",
                       "by maker"}));
    EXPECT_EQ(device::Start(), "own session, 0 signals, 0 sockets, boot 1\n");
    ASSERT_EQ(Images().size(), 1U);
    EXPECT_EQ(device::ReadFile(Images()[0]), Make(""))
        << "the tool gets the image as it was before it was signed";
}

}  // namespace pages

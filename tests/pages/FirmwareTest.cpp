#include <signal.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <optional>
#include <thread>

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

/// Files of a request go with the request, which ends a little after its answer.
bool BecomesEmpty(char const *folder) {
    for (int tries = 200; tries > 0 && !fs::is_empty(folder); --tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return fs::is_empty(folder);
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
        device::ReplacedFile const file("/var/tmp/image", content);
        return browser.PostFile(page.path, Upload{"fwupload", name, type, "/var/tmp/image"});
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
    EXPECT_EQ(html.All("//div[@id='tabcontainer']/ul/li/a/@href"), (Strings{"#config_tab", "#status_tab"}));
    EXPECT_EQ(html.One("//div[@id='conf_hw_platform' and @name='platform']"), "brq4");
    std::string const form = "//div[@id='component_config']/form[@enctype='multipart/form-data']";
    EXPECT_EQ(html.One(form + "/@action"), page.path);
    EXPECT_EQ(html.One(form + "//tr[th='Firmware Version(s)']/td/pre"), "1.2.3 <rootfs> & more\n");
    EXPECT_EQ(html.One(form + "//input[@type='file']/@id"), "cfg_frw_file");
    EXPECT_EQ(html.One(form + "//input[@type='submit']/@value"), "Load Firmware");
    EXPECT_EQ(html.All("//div[@id='component_status']//h3"),
              (Strings{"Firmware Version(s)", "FW Tool", "Base"}));
    EXPECT_EQ(html.All("//div[@id='component_status']//pre"),
              (Strings{"1.2.3 <rootfs> & more\n", "tool says -s\n"}));
    EXPECT_EQ(html.Count("//div[contains(@class,'form_result_msg')]"), 0U);
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
    struct {
        std::string content;
        char const *name;
    } const cases[] = {
        {magic, "image.tar"},
        {magic, "image.bin.exe"},
        {magic, "imagebin"},
        {"\xD0\x0D\xFE", "image.bin"},
        {"x" + magic, "image.bin"},
        {"", "image.bin"},
        {"", ""},
    };
    for (auto const &[content, name] : cases) {
        Html const html = ExpectAnswer(
            name, [&] { return Send(content, name); },
            {.failure = invalid, .errors = {content.empty() ? wrongLength : noImage}, .commands = resumed});
        EXPECT_EQ(html.Count("//tr[@class='cppcms_error_msg']//input[@id='cfg_frw_file']"), 1U);
    }
    ExpectAnswer(
        "text", [&] { return Send(magic, "image.itb", "text/plain"); },
        {.failure = notSaved, .commands = resumed, .logged = "Unrecognized firmware MIME type text/plain"});

    Html const noFile(browser.Post(page.path, Fields{{"_2", "Load Firmware"}}).body);
    EXPECT_EQ(noFile.One("//div[contains(@class,'failure')]"), invalid);
    EXPECT_EQ(Images(), Strings());
    EXPECT_TRUE(BecomesEmpty(uploads));
}

TEST_F(FirmwareTest, RefusesMoreThanThreeHundredMegabytes) {
    fs::create_directories("/var/tmp/large");
    device::ReplacedFile const file("/var/tmp/large/image", magic);
    fs::resize_file("/var/tmp/large/image", (300U << 20) + 1);
    Answer const answer =
        browser.PostFile(page.path, Upload{"fwupload", "image.bin", octets, "/var/tmp/large/image"});
    EXPECT_EQ(Html(answer.body).One("//span[@class='cppcms_error_msg']"), wrongLength);
    EXPECT_TRUE(BecomesEmpty(uploads));
}

TEST_F(FirmwareTest, WhileTheToolHoldsItsLockEveryPageIsTheProgress) {
    Answer const idle = browser.Get(statusPage);
    EXPECT_EQ(idle.status, 302);
    EXPECT_EQ(idle.location, std::string(device::address) + page.path);

    device::ReplacedFile const file(toolLock, "");
    EXPECT_EQ(browser.Get(statusPage).status, 302) << "the file alone is no upgrade";
    device::HeldLock lock(toolLock);
    for (auto const &path :
         Strings{"/config/", page.path, statusPage, "/config/settings/reboot", "/config/nothing"})
        EXPECT_TRUE(IsProgress(browser.Get(path))) << path;
    EXPECT_TRUE(IsProgress(Send(magic, "image.bin")));
    EXPECT_EQ(Images(), Strings()) << "an upgrade runs already";
    lock.Release();
    EXPECT_FALSE(IsProgress(browser.Get("/config/")));
}

namespace {

constexpr int port = 9103;

/// A process that may be stopped for an upgrade, with a tool that tells how it was started.
class UpgradeTest : public FirmwareTest {
  protected:
    UpgradeTest() {
        browser = Browser("http://127.0.0.1:" + std::to_string(port));
        process.emplace(device::Configuration(port), Strings{"MOUNT_DIR="});
        EXPECT_TRUE(browser.WaitUntilUp());
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

    EXPECT_EQ(device::ExpectDetachedStart(), "1") << "FWBOOT, without the web server";
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
    auto const prepared = std::async(std::launch::async, [] {
        return Browser("http://127.0.0.1:" + std::to_string(port)).Call("prepare_fw_upgrade");
    });
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

}  // namespace pages

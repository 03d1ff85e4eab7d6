#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

namespace {

namespace fs = std::filesystem;

constexpr char firmwarePage[] = "/config/settings/firmware";
constexpr char statusPage[] = "/config/settings/firmware_upgrade_status";
constexpr char toolLock[] = "/tmp/fwtool_6v1Znb.lock";
constexpr char toolStatus[] = "/tmp/fwtool_status.txt";
constexpr char uploads[] = "/var/lib/webconfig/uploads";

constexpr char staticFailure[] =
    "//div[contains(@class,'failure') and contains(@class,'static') and contains(@class,'form_result_msg')]";

std::string const magic = "\xD0\x0D\xFE\xED";
std::string const octets = "application/octet-stream";

/// The saved images, in memory or on disk.
std::vector<std::string> Images() {
    std::vector<std::string> images;
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
    Html const page(answer.body);
    return answer.status == 200 && page.One("//h2[@id='config_page_title']") == " Firmware " &&
           page.Count("//div[@class='progress_block hiddenOnLoad']//div[@id='progressbar']") == 1 &&
           page.Count("//form") == 0;
}

class FirmwareTest : public testing::Test {
  protected:
    Answer Send(std::string const &content, std::string const &name, std::string const &type = octets) {
        device::TemporaryFile const file("/var/tmp/image", content);
        return browser.PostFile(firmwarePage, Upload{"fwupload", name, type, "/var/tmp/image"});
    }

    Browser browser{device::address};
};

/// Where the device has no firmware tool of its own, or the test must not run it.
constexpr char versionTool[] = "/usr/bin/ubi_get_volume_versions.sh";
constexpr char firmwareTool[] = "/usr/bin/fwtool";

}  // namespace

TEST_F(FirmwareTest, ShowsVersionsAndTheToolsStatus) {
    device::RecordingProgram const versions(versionTool, "echo '1.2.3 <rootfs> & more'");
    device::RecordingProgram const tool(firmwareTool, "echo tool says \"$@\"");
    Html const page(browser.Get(firmwarePage).body);
    EXPECT_EQ(page.All("//div[@id='tabcontainer']/ul/li/a/@href"),
              (std::vector<std::string>{"#config_tab", "#status_tab"}));
    EXPECT_EQ(page.One("//div[@id='conf_hw_platform' and @name='platform']"), "brq4");
    std::string const form = "//div[@id='component_config']/form[@enctype='multipart/form-data']";
    EXPECT_EQ(page.One(form + "/@action"), firmwarePage);
    EXPECT_EQ(page.One(form + "//tr[th='Firmware Version(s)']/td/pre"), "1.2.3 <rootfs> & more\n");
    EXPECT_EQ(page.One(form + "//input[@type='file']/@id"), "cfg_frw_file");
    EXPECT_EQ(page.One(form + "//input[@type='submit']/@value"), "Load Firmware");
    EXPECT_EQ(page.All("//div[@id='component_status']//h3"),
              (std::vector<std::string>{"Firmware Version(s)", "FW Tool", "Base"}));
    EXPECT_EQ(page.All("//div[@id='component_status']//pre"),
              (std::vector<std::string>{"1.2.3 <rootfs> & more\n", "tool says -s\n"}));
    EXPECT_EQ(page.Count("//div[contains(@class,'form_result_msg')]"), 0U);
}

TEST_F(FirmwareTest, UnknownVersionsAndAFailedUpgradeAreTold) {
    device::RecordingProgram const none(versionTool, "true");
    Html const unknown(browser.Get(firmwarePage).body);
    EXPECT_EQ(unknown.One("//div[@id='component_config']//pre"), "n/a");
    EXPECT_EQ(unknown.One(staticFailure), "Unknown firmware version(s)");

    Html const failed(browser.Get(std::string(firmwarePage) + "?type=failedUpgrade").body);
    EXPECT_EQ(failed.One(staticFailure), "Firmware upgrade failed");
    EXPECT_EQ(failed.Count("//input[@type='file']"), 1U);
}

TEST_F(FirmwareTest, RefusesWhatIsNoImageAndKeepsNoFile) {
    struct {
        std::string content;
        std::string name;
        std::string type;
        std::string message;
    } const cases[] = {
        {magic, "image.tar", octets, invalid},
        {magic, "image.bin.exe", octets, invalid},
        {magic, "imagebin", octets, invalid},
        {"\xD0\x0D\xFE", "image.bin", octets, invalid},
        {"x" + magic, "image.bin", octets, invalid},
        {"", "image.bin", octets, invalid},
        {"", "", octets, invalid},
        {magic, "image.itb", "text/plain", notSaved},
    };
    for (auto const &c : cases) {
        device::TakeCommands();
        Html const page(Send(c.content, c.name, c.type).body);
        EXPECT_EQ(device::TakeCommands().back(), "/usr/bin/supvis --resume deployer") << "it was suspended";
        EXPECT_EQ(page.One("//div[contains(@class,'failure')]"), c.message) << c.name << ' ' << c.type;
        bool const marked = page.Count("//tr[@class='cppcms_error_msg']//input[@id='cfg_frw_file']") == 1;
        EXPECT_EQ(marked, c.message == invalid) << c.name;
    }
    EXPECT_TRUE(device::WaitForText("/var/log/messages", "Unrecognized firmware MIME type text/plain"));

    Html const noFile(browser.Post(firmwarePage, Fields{{"_2", "Load Firmware"}}).body);
    EXPECT_EQ(noFile.One("//div[contains(@class,'failure')]"), invalid);
    EXPECT_EQ(Images(), std::vector<std::string>{});
    EXPECT_TRUE(BecomesEmpty(uploads));
}

TEST_F(FirmwareTest, RefusesMoreThanThreeHundredMegabytes) {
    fs::create_directories("/var/tmp/large");
    device::TemporaryFile const file("/var/tmp/large/image", magic);
    fs::resize_file("/var/tmp/large/image", (300U << 20) + 1);
    Answer const answer =
        browser.PostFile(firmwarePage, Upload{"fwupload", "image.bin", octets, "/var/tmp/large/image"});
    EXPECT_EQ(Html(answer.body).One("//span[@class='cppcms_error_msg']"),
              "Invalid file length; minimum 1, maximum 314572800 bytes.");
    EXPECT_TRUE(BecomesEmpty(uploads));
}

TEST_F(FirmwareTest, WhileTheToolHoldsItsLockEveryPageIsTheProgress) {
    Answer const idle = browser.Get(statusPage);
    EXPECT_EQ(idle.status, 302);
    EXPECT_EQ(idle.location, std::string(device::address) + firmwarePage);

    device::TemporaryFile const file(toolLock);
    EXPECT_EQ(browser.Get(statusPage).status, 302) << "the file alone is no upgrade";
    device::HeldLock lock(toolLock);
    for (char const *path :
         {"/config/", firmwarePage, statusPage, "/config/settings/reboot", "/config/nothing"})
        EXPECT_TRUE(IsProgress(browser.Get(path))) << path;
    EXPECT_TRUE(IsProgress(Send(magic, "image.bin")));
    EXPECT_EQ(Images(), std::vector<std::string>{}) << "an upgrade runs already";
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
        process.emplace(device::Configuration(port), std::vector<std::string>{"MOUNT_DIR="});
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
    device::TemporaryFile const leftover(toolStatus, "{ 'state' : 'done' }\n");
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

TEST_F(UpgradeTest, AnImageThatCannotBeSavedLeavesTheServiceAsItWas) {
    for (int i = 0; i < 10000; ++i)
        fs::create_symlink("/tmp/victim", "/tmp/firmware" + std::to_string(i));
    Html const page(Send(magic, "image.bin").body);
    EXPECT_EQ(Images().size(), 10000U);
    device::Shell("find /tmp -name 'firmware*' -delete");
    EXPECT_FALSE(fs::exists("/tmp/victim"));
    EXPECT_EQ(page.One("//div[contains(@class,'failure')]"), notSaved);
    EXPECT_TRUE(process->WaitForLog("Firmware image not saved: "));
    EXPECT_FALSE(fs::exists("/tmp/webconfig_fwsugd_flag"));
    EXPECT_EQ(browser.Get("/config/").status, 200);
    EXPECT_EQ(process->Wait(0), -1) << "still running";
}

}  // namespace pages

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"

namespace pages {

namespace {

constexpr int port = 9102;
constexpr char address[] = "http://127.0.0.1:9102";
constexpr int failure = 1;

std::size_t Entries(std::string const &folder) {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
}

}  // namespace

TEST(ProcessTest, AMissingRootKeyIsFatal) {
    for (char const *key : {"sync", "async", "rpc"}) {
        device::Process process(device::Configuration(port, key));
        EXPECT_EQ(process.Wait(), failure) << key;
    }
    device::Process garbage("{ not json");
    EXPECT_EQ(garbage.Wait(), failure);
}

TEST(ProcessTest, SignalsEndItWithStatusZero) {
    for (int signal : {SIGTERM, SIGINT}) {
        device::Process process(device::Configuration(port));
        ASSERT_TRUE(Browser(address).WaitUntilUp());
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), 0);
        EXPECT_NE(process.Log().find("webconfig exit"), std::string::npos);
    }
}

TEST(ProcessTest, ReloadsLeakNothingAndLogOnce) {
    device::Process process(device::Configuration(port));
    Browser browser(address);
    ASSERT_TRUE(browser.WaitUntilUp());
    std::string const proc = "/proc/" + std::to_string(process.Pid());
    ASSERT_TRUE(device::Reload(process, browser));
    std::size_t const descriptors = Entries(proc + "/fd");
    std::size_t const threads = Entries(proc + "/task");
    for (int times = 0; times < 20; ++times)
        ASSERT_TRUE(device::Reload(process, browser));
    EXPECT_LE(Entries(proc + "/fd"), descriptors + 1);  // a connection may just come or go
    EXPECT_EQ(Entries(proc + "/task"), threads);
}

TEST(ProcessTest, AFlaggedUpgradeIsStartedOnceAndStopsTheApplications) {
    std::filesystem::create_directories("/tmp/volumes/app/etc/init.d");
    std::filesystem::create_directories("/tmp/volumes/without-script");
    device::WriteFile(
        "/tmp/volumes/app/etc/init.d/rcS",
        "#!/bin/sh\necho \"$@\" >>/tmp/volumes/stopped\nwhile [ -e /tmp/volumes/busy ]; do sleep .1; done\n");
    device::Shell(
        "chmod +x /tmp/volumes/app/etc/init.d/rcS; touch /tmp/webconfig_fwsugd_flag /tmp/volumes/busy; rm -f "
        "/tmp/fwtool_status.txt");

    device::Process process(device::Configuration(port), {"MOUNT_DIR=/tmp/volumes"});
    ASSERT_TRUE(device::WaitForText("/tmp/volumes/stopped", "stop\n"));
    EXPECT_FALSE(std::filesystem::exists("/tmp/webconfig_fwsugd_flag"));
    Browser browser(address);
    ASSERT_TRUE(browser.WaitUntilUp());

    // The applications take their time to stop; the tool, which comes after them, has no lock yet.
    auto const status = [&] { return browser.Call("fw_upgrade_status").body; };
    auto const isUpgrading = [&](char const *path) {
        return browser.Get(path).body.find("id=\"progressbar\"") != std::string::npos;
    };
    EXPECT_NE(status().find(R"("result":"")"), std::string::npos) << status();
    EXPECT_TRUE(isUpgrading("/config/") && isUpgrading("/config/settings/firmware_upgrade_status"));
    std::filesystem::remove("/tmp/volumes/busy");
    for (int tries = 500; tries > 0 && isUpgrading("/config/"); --tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(isUpgrading("/config/"));
    EXPECT_NE(status().find("failed"), std::string::npos) << "there was no image: " << status();

    browser.Call("reload");
    ASSERT_TRUE(process.WaitForLog("forced reload"));
    ASSERT_TRUE(browser.WaitUntilUp());
    EXPECT_EQ(device::ReadFile("/tmp/volumes/stopped"), "stop\n");
    std::filesystem::remove_all("/tmp/volumes");
}

}  // namespace pages

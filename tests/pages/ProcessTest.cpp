#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"

namespace pages {

namespace {

constexpr int port = 9102;
constexpr char reloadFlag[] = "/tmp/webconfig_freload_flag";
constexpr char address[] = "http://127.0.0.1:9102";
constexpr int failure = 1;
constexpr char upgradeFlag[] = "/tmp/webconfig_fwsugd_flag";

/// What \a count browsers get within five seconds that poll at once.
std::string AnswersOfPolls(int count) {
    std::string const call = R"({"method":"ethernet1_status","params":[],"id":1})";
    return device::Shell("curl -s -m 2 -Z --parallel-immediate --parallel-max 200 -d '" + call +
                         "' -H 'Content-Type: application/json' '" + address + "/status/rpc?[1-" +
                         std::to_string(count) + "]' 2>/dev/null");
}

}  // namespace

TEST(ProcessTest, AMissingRootKeyIsFatal) {
    for (std::string const key : {"\"sync\"", "\"async\"", "\"rpc\""}) {
        std::string configuration = device::Configuration(port);
        configuration.replace(configuration.find(key), key.size(), "\"other\"");
        EXPECT_EQ(device::Process(configuration).Wait(), failure) << key;
    }
}

TEST(ProcessTest, SaysOnTheTerminalHowItIsCalledAndWhatIsWrong) {
    device::ReplacedFile const garbage("/tmp/garbage.json", "{\n  not json");
    std::tuple<char const *, char const *, int> const cases[] = {
        {"", "webconfig: No configuration defined\nUsage: webconfig [-c FILE]", failure},
        {"--help", "Usage: webconfig [-c FILE]", 0},
        {"-c /none.json --version", "webconfig 1.", 0},
        {"-c --help", "webconfig: Failed to open filename:--help\n", failure},
        {"-c /tmp/garbage.json", "webconfig: Error reading configuration file /tmp/garbage.json in line:2\n",
         failure},
    };
    for (auto const &[arguments, text, status] : cases) {
        std::string const said =
            device::Shell(std::string("webconfig ") + arguments + " 2>&1 >/dev/null; echo status $?");
        EXPECT_TRUE(said.starts_with(text)) << said;
        EXPECT_TRUE(said.ends_with("status " + std::to_string(status) + '\n')) << said;
    }
}

TEST(ProcessTest, AStopSignalWinsOverAReload) {
    for (int signal : {SIGTERM, SIGINT, SIGUSR1}) {
        device::WriteFile(reloadFlag, "");
        device::Process process(device::Configuration(port));
        Browser browser = device::Up(address);
        EXPECT_FALSE(std::filesystem::exists(reloadFlag)) << "left by an earlier process";
        device::WriteFile(reloadFlag, "");
        process.Signal(signal);
        EXPECT_EQ(process.Wait(), 0) << signal;
        std::string const log = process.Log();
        EXPECT_NE(log.find("stopped by signal " + std::to_string(signal)), std::string::npos);
        EXPECT_NE(log.find("The reload that was asked for is dropped"), std::string::npos);
        EXPECT_NE(log.find("webconfig exit"), std::string::npos);
        EXPECT_EQ(log.find("forced reload"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(reloadFlag));
    }
}

TEST(ProcessTest, AStopSignalIsNotLostWhateverTheProcessIsDoing) {
    for (int milliseconds = 0; milliseconds < 60; milliseconds += 10) {
        device::Process process(device::Configuration(port));
        Browser browser = device::Up(address);
        std::thread reload([] { Browser(address).Call("reload"); });
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        process.Signal(SIGTERM);
        EXPECT_EQ(process.Wait(), 0) << milliseconds;
        reload.join();
    }
    // Before a service is there, and in the time that an upgrade has to start.
    for (bool const upgrade : {false, true}) {
        if (upgrade)
            device::WriteFile(upgradeFlag, "");
        device::Process process(device::Configuration(port));
        ASSERT_TRUE(device::WaitForText("/proc/" + std::to_string(process.Pid()) + "/status", "202\nSigIgn"));
        process.Signal(SIGTERM);
        EXPECT_EQ(process.Wait(3), 0) << upgrade;
    }
    std::filesystem::remove(upgradeFlag);
}

TEST(ProcessTest, AReloadWhoseFlagCannotBeWrittenIsDoneAllTheSame) {
    device::Shell(std::string("mkdir ") + reloadFlag + "; mount -t tmpfs none " + reloadFlag);
    device::Process process(device::Configuration(port));
    Browser browser = device::Up(address);
    EXPECT_TRUE(device::Reload(process, browser));
    EXPECT_NE(process.Log().find(std::string("Cannot write ") + reloadFlag), std::string::npos);
    device::Shell(std::string("umount ") + reloadFlag + "; rmdir " + reloadFlag);
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(), 0);
}

TEST(ProcessTest, MediaAtTheSitesRootLeaveTheStatusSpaceAlone) {
    std::string configuration = device::Configuration(port);
    std::string const root = R"("media_root":"media")";
    configuration.replace(configuration.find(root), root.size(), R"("media_root":"")");
    device::Process const process(configuration);
    Browser browser = device::Up(address);
    EXPECT_EQ(browser.Get("/css/screen.css").contentType, "text/css");
    EXPECT_EQ(browser.Get("/config/").status, 200);
    EXPECT_EQ(browser.Get("/").location, std::string(address) + "/config/");
    EXPECT_NE(browser.Call("dns_server_status").body.find("currentConf"), std::string::npos);
}

TEST(ProcessTest, ALogFileKeepsItsLinesOverReloadsAndTheSystemLogItsName) {
    device::ReplacedFile const file("/tmp/webconfig.log", "from another time\n");
    std::string configuration = device::Configuration(port);
    std::string const level = R"("level":"debug",)";
    configuration.insert(configuration.find(level) + level.size(),
                         R"("file":{"name":"/tmp/webconfig.log"},"syslog":{"enable":true,"id":"other"},)");
    std::string const count = "grep -c 'web: webconfig: webconfig start' /var/log/messages";
    int const before = std::stoi(device::Shell(count));
    device::Process process(configuration);
    Browser browser = device::Up(address);
    ASSERT_TRUE(device::Reload(process, browser));
    std::string const log = device::ReadFile("/tmp/webconfig.log");
    EXPECT_EQ(log.find("another time"), std::string::npos);
    EXPECT_EQ(device::Count(log, "webconfig start"), 2U);
    EXPECT_EQ(device::Count(log, "logging.syslog is ignored"), 2U);
    EXPECT_EQ(std::stoi(device::Shell(count)), before + 2);
}

TEST(ProcessTest, WhatHangsHoldsNeitherOthersNorAReloadNorAStop) {
    using namespace std::chrono_literals;
    char const hang[] = "exec sleep 45";
    device::RecordingProgram const poll("/usr/sbin/brctl", hang);
    device::RecordingProgram const call("/usr/bin/supvis", hang);
    device::RecordingProgram const page("/etc/erase/erase-partition", hang);
    device::ReplacedFile const upgrade("/tmp/fwtool_status.txt", "done\n");
    device::HeldLock const writing("/tmp/fwtool_status.txt");
    device::Process process(device::Configuration(port));
    Browser browser = device::Up(address);
    device::TakeCommands();

    auto const ask = [](auto question) {
        return std::async(std::launch::async, [question] {
            Browser other(address);
            return question(other);
        });
    };
    auto polled = ask([](Browser &other) { return other.Call("ethernet1_status"); });
    auto prepared = ask([](Browser &other) { return other.Call("prepare_fw_upgrade"); });
    auto erased = ask([](Browser &other) {
        return other.Post(
            "/config/settings/advanced",
            {{"submit", "ErasePartition"}, {"eraseType", "erase_all"}, {"eraseWhich", "erase_log"}});
    });
    ASSERT_TRUE(device::WaitForText("/var/log/device-commands", "brctl show\n"));
    ASSERT_TRUE(device::WaitForText("/var/log/device-commands", "supvis --suspend deployer\n"));
    ASSERT_TRUE(device::WaitForText("/var/log/device-commands", "erase-partition log\n"));

    auto queued = ask([](Browser &other) {
        return other.Post("/config/settings/advanced", {{"submit", "Nothing"}});
    });

    // One is being answered, a hundred wait. Those of a burst that come too late for it wait all the same.
    std::string const refused = R"("error":"Too many calls wait for this answer")";
    EXPECT_EQ(device::Count(AnswersOfPolls(90), refused), 0u);
    bool full = false;
    for (int burst = 0; burst < 3 && !full; ++burst)
        full = device::Count(AnswersOfPolls(60), refused) > 0;
    EXPECT_TRUE(full);
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(browser.Get("/config/settings/about").status, 200);
    EXPECT_NE(browser.Call("dns_server_status").result, "");
    EXPECT_EQ(browser.Call("fw_upgrade_status").result, R"("")");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);

    auto const reload = std::chrono::steady_clock::now();
    EXPECT_TRUE(device::Reload(process, browser));
    EXPECT_LT(std::chrono::steady_clock::now() - reload, 15s);  // most of ten, and a start on a busy machine
    EXPECT_NE(polled.get().body.find(R"("brctl":"")"), std::string::npos);
    EXPECT_EQ(prepared.get().result, "-1");
    EXPECT_EQ(queued.get().status, 503) << "its commands would not have run";
    for (char const *program : {"brctl (and 5", "supvis (and 19", "/etc/erase/erase-partition (and 4"})
        EXPECT_NE(process.Log().find(std::string("No result of the command ") + program), std::string::npos)
            << program;
    EXPECT_NE(erased.get().body.find("Error: Failure erasing log partition."), std::string::npos);
    EXPECT_NE(browser.Call("dns_server_status").result.find("nameserver"), std::string::npos)
        << "the new service runs commands";

    device::TakeCommands();
    prepared = ask([](Browser &other) { return other.Call("prepare_fw_upgrade"); });
    ASSERT_TRUE(device::WaitForText("/var/log/device-commands", "supvis --suspend deployer\n"));
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(10), 0);
}

TEST(ProcessTest, AFlaggedUpgradeIsStartedOnceAndStopsTheApplications) {
    device::WriteFile("/tmp/volumes/app/etc/init.d/rcS",
                      "#!/bin/sh\n{ echo \"$*\"; pwd; umask; readlink /proc/self/fd/0 /proc/$PPID/fd/2;"
                      " ls /proc/$PPID/fd; grep SigBlk /proc/self/status; } >>/tmp/volumes/stopped\n"
                      "while [ -e /tmp/volumes/busy ]; do sleep .1; done\n");
    device::Shell(
        "cd /tmp; chmod +x volumes/app/etc/init.d/rcS; touch webconfig_fwsugd_flag volumes/busy;"
        "rm -f fwtool_status.txt");

    device::Log const log;
    device::Process process(device::Configuration(port), {"MOUNT_DIR=/tmp/volumes"});
    ASSERT_TRUE(device::WaitForText("/tmp/volumes/stopped", "SigBlk"));
    EXPECT_FALSE(std::filesystem::exists(upgradeFlag));
    Browser browser = device::Up(address);

    // The applications take their time to stop; the tool, which comes after them, has no lock yet.
    auto const isUpgrading = [&] {
        return browser.Get("/config/").body.find("id=\"progressbar\"") != std::string::npos;
    };
    EXPECT_EQ(browser.Call("fw_upgrade_status").result, R"("")");
    EXPECT_TRUE(isUpgrading());
    std::filesystem::remove("/tmp/volumes/busy");
    EXPECT_TRUE(device::WaitUntil(10, [&] { return !isUpgrading(); }));
    EXPECT_NE(browser.Call("fw_upgrade_status").result.find("failed"), std::string::npos) << "no image";

    EXPECT_EQ(device::Shell("ps -o stat= --ppid " + std::to_string(process.Pid()) + " | grep -c Z"), "0\n");

    EXPECT_TRUE(device::Reload(process, browser));
    EXPECT_EQ(device::ReadFile("/tmp/volumes/stopped"),
              "stop\n/\n0000\n/dev/null\n/dev/null\n0\n1\n2\nSigBlk:\t0000000000000000\n")
        << "once, by a clean daemon";
    EXPECT_TRUE(log.Has("\"/tmp/volumes/app/etc/init.d/rcS stop\" returned: 0"))
        << "in the log also before the first service";
    std::filesystem::remove_all("/tmp/volumes");
}

}  // namespace pages

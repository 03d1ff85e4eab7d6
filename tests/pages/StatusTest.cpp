#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"

namespace pages {

namespace {

constexpr char firmwareStatus[] = "/tmp/fwtool_status.txt";
constexpr char firmwareLock[] = "/tmp/fwtool_6v1Znb.lock";
constexpr char failed[] = R"({"id":1,"error":null,"result":"{ 'state' : 'failed' }"})";

std::string Result(std::string const &json) {
    return R"({"id":1,"error":null,"result":)" + json + '}';
}

std::string Error(std::string const &text) {
    return R"({"id":1,"error":")" + text + R"(","result":null})";
}

}  // namespace

TEST(StatusTest, GeneralStatusHasItsFiveTexts) {
    Browser browser(device::address);
    Answer const answer = browser.Call("general_dynamic_status");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.contentType, "application/json; charset=utf-8");
    EXPECT_EQ(answer.body.substr(0, 27), R"({"id":1,"error":null,"resul)");
    for (char const *text : {R"("boardTemp":"unknown")", R"("date":")", R"("uptime":")", "load average",
                             R"("top":"top - )", R"("processStatus":"UID )"})
        EXPECT_NE(answer.body.find(text), std::string::npos) << text;
}

TEST(StatusTest, WrongCallsGetTheirErrors) {
    Browser browser(device::address);
    for (char const *method :
         {"general_dynamic_status", "fw_upgrade_status", "prepare_fw_upgrade", "reload"}) {
        for (char const *parameters : {R"(["x"])", "[1,2]", "[null]"})
            EXPECT_EQ(browser.Call(method, parameters).body, Error("Invalid parametres number")) << method;
    }
    EXPECT_EQ(browser.Call("no_such_method").body, Error("Method not found"));

    struct {
        char const *body;
        char const *type;
        char const *answer;
    } const cases[] = {
        {R"({"method":"general_dynamic_status","params":[],"id":null})", "application/json", ""},
        {"{", "application/json", "Invalid JSON\n"},
        {"{}", "text/plain", "Invalid content type\n"},
    };
    for (auto const &c : cases) {
        Answer const answer = browser.Post("/status/rpc", c.body, c.type);
        EXPECT_EQ(answer.status, 200) << c.body;
        EXPECT_EQ(answer.body, c.answer) << c.body;
    }
}

TEST(StatusTest, FirmwareUpgradeStatus) {
    Browser browser(device::address);
    auto const status = [&] { return browser.Call("fw_upgrade_status").body; };
    struct {
        char const *line;      // null: no status file
        char const *finished;  // answer while no upgrade runs
        char const *running;   // answer while one does
    } const cases[] = {
        {nullptr, failed, R"("")"},
        {"", R"("")", R"("")"},
        {"done\n", R"("done\n")", R"("done\n")"},
        {"{ 'state' : 'writing' }\nsecond line\n", failed, R"("{ 'state' : 'writing' }\n")"},
        {"{ 'state' : 'done' }", R"("{ 'state' : 'done' }")", R"("{ 'state' : 'done' }")"},
    };
    for (auto const &c : cases) {
        device::Shell(std::string("rm -f ") + firmwareStatus + ' ' + firmwareLock);
        if (c.line)
            device::WriteFile(firmwareStatus, c.line);
        EXPECT_EQ(status(), c.finished == failed ? failed : Result(c.finished));

        device::HeldLock const upgrade(firmwareLock);
        EXPECT_EQ(status(), Result(c.running));
    }
    device::Shell(std::string("rm -f ") + firmwareStatus + ' ' + firmwareLock);
    device::WriteFile(firmwareStatus, std::string(300, 'x'));
    device::HeldLock const upgrade(firmwareLock);
    EXPECT_EQ(status(), Result('"' + std::string(99, 'x') + '"'));
    device::Shell(std::string("rm -f ") + firmwareStatus);
}

TEST(StatusTest, PreparingAnUpgradeAnswersTheRawStatusOfTheCommand) {
    Browser browser(device::address);
    device::Shell("$APPLICATION_DIR/etc/rcS.d/deployer start");  // an upgrade may have stopped it
    EXPECT_EQ(browser.Call("prepare_fw_upgrade").body, Result("0"));
    EXPECT_EQ(device::Shell("tail -n 1 /var/log/device-commands"), "/usr/bin/supvis --suspend deployer\n");
    EXPECT_NE(device::Shell("supvis --list").find("deployer\tsuspended"), std::string::npos);
    device::Shell("supvis --resume deployer");
    device::ReplacedFile const failure("/etc/fail/supvis", "3");
    EXPECT_EQ(browser.Call("prepare_fw_upgrade").body, Result("768"));
}

TEST(StatusTest, ReloadsWhileABrowserPolls) {
    std::atomic<bool> stop = false;
    std::atomic<int> polls = 0;
    std::thread poller([&] {
        Browser other(device::address);
        while (!stop) {
            // The listening socket outlives the service: who comes meanwhile waits in its queue.
            EXPECT_EQ(other.Get("/config/").status, 200);
            ++polls;
        }
    });
    Browser browser(device::address);
    std::string const pid = device::Shell("pgrep -o -x webconfig");
    for (int i = 0; i < 10; ++i) {
        browser.Call("reload");
        EXPECT_TRUE(browser.WaitUntilUp());
    }
    stop = true;
    poller.join();
    EXPECT_GE(polls, 10);
    EXPECT_EQ(device::Shell("pgrep -o -x webconfig"), pid) << "the service is rebuilt in the same process";
    EXPECT_EQ(device::Shell("test -e /tmp/webconfig_freload_flag && echo set"), "");
}

}  // namespace pages

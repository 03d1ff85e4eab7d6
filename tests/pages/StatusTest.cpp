#include <gtest/gtest.h>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"

namespace pages {

namespace {

constexpr char firmwareStatus[] = "/tmp/fwtool_status.txt";
constexpr char firmwareLock[] = "/tmp/fwtool_6v1Znb.lock";
constexpr char failed[] = R"("{ 'state' : 'failed' }")";

}  // namespace

TEST(StatusTest, GeneralStatusHasItsFiveTexts) {
    Answer const answer = Browser(device::address).Call("general_dynamic_status");
    EXPECT_EQ(answer.contentType, "application/json; charset=utf-8");
    for (char const *text : {R"("boardTemp":"unknown")", R"("date":")", R"("uptime":")", "load average",
                             R"("top":"top - )", R"("processStatus":"UID )"})
        EXPECT_NE(answer.result.find(text), std::string::npos) << text;
}

TEST(StatusTest, MethodsWithoutParametersTakeNone) {
    Browser browser(device::address);
    for (char const *method : {"general_dynamic_status", "fw_upgrade_status", "prepare_fw_upgrade", "reload"})
        EXPECT_EQ(browser.Call(method, "[null]").body,
                  R"({"id":1,"error":"Invalid parametres number","result":null})")
            << method;
}

TEST(StatusTest, FirmwareUpgradeStatus) {
    Browser browser(device::address);
    device::ReplacedFile const noLock(firmwareLock);
    std::string const longest = '"' + std::string(99, 'x') + '"';
    struct {
        std::string line;
        std::string finished;  // answer while no upgrade runs
        std::string running;   // answer while one does
    } const cases[] = {
        {"", R"("")", R"("")"},
        {"done\n", R"("done\n")", R"("done\n")"},
        {"{ 'state' : 'writing' }\nsecond line\n", failed, R"("{ 'state' : 'writing' }\n")"},
        {"{ 'state' : 'done' }", R"("{ 'state' : 'done' }")", R"("{ 'state' : 'done' }")"},
        {std::string(300, 'x'), failed, longest},
    };
    for (auto const &[line, finished, running] : cases) {
        device::ReplacedFile const status(firmwareStatus, line);
        EXPECT_EQ(browser.Call("fw_upgrade_status").result, finished) << line;
        device::HeldLock const upgrade(firmwareLock);
        EXPECT_EQ(browser.Call("fw_upgrade_status").result, running) << line;
    }
    device::ReplacedFile const none(firmwareStatus);
    EXPECT_EQ(browser.Call("fw_upgrade_status").result, failed);
}

TEST(StatusTest, PreparingAnUpgradeAnswersTheRawStatusOfTheCommand) {
    Browser browser(device::address);
    device::Shell("$APPLICATION_DIR/etc/rcS.d/deployer start");  // an upgrade may have stopped it
    EXPECT_EQ(browser.Call("prepare_fw_upgrade").result, "0");
    EXPECT_NE(device::Shell("supvis --list").find("deployer\tsuspended"), std::string::npos);
    device::Shell("supvis --resume deployer");
    device::ReplacedFile const failure("/etc/fail/supvis", "3");
    EXPECT_EQ(browser.Call("prepare_fw_upgrade").result, "768");
}

}  // namespace pages

#include <filesystem>
#include <memory>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char rule[] = "net/portfwd/tcp/08443/d_port";
constexpr char address[] = "http://127.0.0.1:8095";
constexpr char trialFile[] = "/tmp/trial/trial";
constexpr char forwarding[] = "/config/network/port_forwarding";

/// A service and a guard of the test's own, with trials of two seconds, and a rule that is on trial when it
/// is saved.
class TrialTest : public testing::Test {
  protected:
    TrialTest() {
        device::Shell("rm -rf /tmp/trial; mkdir /tmp/trial");
        store.Set({{rule, none}, {"net/portfwd/tcp/08443/d_ip", none}});
        StartService();
    }

    static Html AddRule() {
        return Html(Browser(address)
                        .Post(forwarding, {{"protocol", "tcp"},
                                           {"sourcePort", "8443"},
                                           {"destinationIP", "192.168.0.33"},
                                           {"destinationPort", "443"},
                                           {"add", "Add Row"}})
                        .body);
    }

    void StartService() {
        service = std::make_unique<device::Process>(configuration);
        browser = std::make_unique<Browser>(device::Up(address));
        device::TakeCommands();
    }
    void StartGuard() {
        guard = std::make_unique<device::Process>(configuration, Strings(), "/usr/sbin/webconfig-guard");
    }

    Html Press(std::string const &button) {
        return Html(browser->Post("/config/settings/history", {{"action", button}}).body);
    }
    std::string State() { return browser->Call("trial_status").result; }
    /// Whether the trial comes to be in \a state soon.
    bool Becomes(std::string const &state) { return device::WaitForText(trialFile, "state " + state); }
    static bool IsStored() { return device::Shell(std::string("prm get ") + rule + " 2>&1") == "443\n"; }

    std::string const configuration = device::Configuration(
        8095,
        R"("history":{"file":"/tmp/trial/history.db"},"trial":{"file":"/tmp/trial/trial","seconds":2},)");
    device::KeptStore const store;
    std::unique_ptr<device::Process> service;
    std::unique_ptr<device::Process> guard;
    std::unique_ptr<Browser> browser;
};

/// The fields of the trial's file.
std::string File(std::string const &state, std::string const &boot, int until) {
    return "state " + state + "\nset 1\nboot " + boot + "\nuntil " + std::to_string(until) +
           "\nboots 0\nrestart 0\nasked 0\n";
}

}  // namespace

TEST_F(TrialTest, WhatNobodyKeepsGoesBackWithItsCommands) {
    StartGuard();
    Html const page = AddRule();
    EXPECT_TRUE(page.One("//form[@id='trialBox']").starts_with("\nNew settings are on trial until "));
    EXPECT_TRUE(IsStored());
    EXPECT_NE(State().find(R"("state":"running")"), std::string::npos);
    device::TakeCommands();
    ASSERT_TRUE(Becomes("returned"));
    EXPECT_FALSE(IsStored());
    EXPECT_EQ(device::TakeCommands(), Strings{"/etc/nat_setup.sh web_forwarding"});

    Html const told(browser->Get("/config/settings/history").body);
    EXPECT_EQ(told.One("//form[@id='trialBox']"),
              "\nNew settings were taken back: all is as it was before them. \n");
    EXPECT_EQ(told.One("//div[@id='set_2']/p"), "Taken back: nobody kept it");
    EXPECT_EQ(Press("Dismiss").Count("//form[@id='trialBox']"), 0U);
    EXPECT_NE(State().find(R"("state":"none")"), std::string::npos);
}

TEST_F(TrialTest, WhatIsKeptStaysAndWhatIsAskedForGoesBackAtOnce) {
    AddRule();
    EXPECT_EQ(Press("Keep them").One(successMessage), "The new settings are kept.");
    EXPECT_EQ(Press("Keep them").Count(failureMessage), 1U);
    EXPECT_EQ(browser->Call("trial_take_back").result, "false");
    StartGuard();
    EXPECT_FALSE(device::WaitForText(trialFile, "state", 3));
    EXPECT_TRUE(IsStored());

    browser->Post(forwarding,
                  {{"rowId", "0"}, {"protocol", "tcp"}, {"sourcePort", "8443"}, {"delete", "Delete"}});
    EXPECT_FALSE(IsStored());
    EXPECT_EQ(browser->Call("trial_take_back").result, "true");
    ASSERT_TRUE(Becomes("returned"));
    EXPECT_TRUE(IsStored());
}

TEST_F(TrialTest, TheGuardNeedsNoServiceAndGoesOnWhereItWasInterrupted) {
    AddRule();
    service->Signal(SIGKILL);
    service->Wait();
    std::string const boot = device::Shell("cat /proc/sys/kernel/random/boot_id");
    struct {
        std::string file;
        bool stays;
    } const cases[] = {
        {File("saving", boot.substr(0, boot.size() - 1), 0), false},
        {File("returning", "another", 0), false},
        {File("running", "another", 1),
         false},  // a new start of the device begins the time anew, and it ends
        {"garbage", true},
        {"state running\nset 0\n", true},
    };
    for (auto const &each : cases) {
        SCOPED_TRACE(each.file);
        device::Shell(std::string("prm set -t string ") + rule + " 443");
        device::WriteFile(trialFile, each.file);
        StartGuard();
        EXPECT_EQ(device::WaitForText(trialFile, "state returned", each.stays ? 2 : 10), !each.stays);
        EXPECT_EQ(IsStored(), each.stays);
        guard->Signal(SIGKILL);
        guard->Wait();
    }
}

TEST_F(TrialTest, WhatNeedsARestartIsOnTrialFromThereOn) {
    store.Set({{"net/lan_ipaddr", "192.168.0.1"}});
    StartGuard();
    Fields const address = {{"addressMode", "static"},
                            {"ipAddress", "192.168.0.77"},
                            {"netmask", "255.255.255.0"},
                            {"gateway", "192.168.0.254"},
                            {"speedsAvailable", "3"}};
    EXPECT_EQ(Html(browser->Post("/config/network/ethernet1", address).body).All(anyMessage),
              Strings{"Ethernet 1 settings updated, reboot to take effect"});
    EXPECT_NE(State().find(R"("state":"waiting")"), std::string::npos);
    EXPECT_EQ(Press("Keep them").Count(failureMessage), 1U) << "nothing was tried yet";
    EXPECT_FALSE(device::WaitForText(trialFile, "state returned", 4));

    device::RecordingProgram const reboot("/usr/sbin/reboot", device::tellStart);
    device::TakeCommands();
    std::string file = device::ReadFile(trialFile);
    std::string const boot = device::Shell("cat /proc/sys/kernel/random/boot_id");
    file.replace(file.find(boot), boot.size(), "before\n");
    device::WriteFile(trialFile, file);
    ASSERT_TRUE(Becomes("returned"));
    EXPECT_EQ(device::Shell("prm get net/lan_ipaddr"), "192.168.0.1\n");
    device::Start();
    EXPECT_EQ(device::TakeCommands(), Strings{"/sbin/reboot -d 5"});
    StartGuard();
    device::Start();
    EXPECT_EQ(device::TakeCommands(), Strings{"/sbin/reboot -d 5"}) << "it might have ended before it asked";
    std::filesystem::remove("/tmp/webconfig_reboot_flag");
}

}  // namespace pages

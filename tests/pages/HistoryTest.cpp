#include <filesystem>
#include <fstream>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char historyPage[] = "/config/settings/history";
constexpr char shownChanges[] = "//div[@class='saved_changes']//li";
constexpr int port = 8094;
std::string const address = "http://127.0.0.1:" + std::to_string(port);

class HistoryTest : public PageTest {
  protected:
    HistoryTest()
        : PageTest({"/config/settings/advanced",
                    "system/remote/",
                    {{"ssh_enabled", "no"}, {"web_enabled", "no"}, {"icmp_enabled", "yes"}}}) {}

    /// The number of the set that a page tells of; empty where it tells of none.
    static std::string NumberIn(Html const &html) {
        auto const links = html.All("//div[@class='saved_changes']/a/@href");
        return links.empty() ? "" : links.front().substr(links.front().find_last_of('_') + 1);
    }

    /// Saves the device's name and returns the number of the set.
    std::string Rename(std::string const &name, Browser &by) {
        Html const html(by.Post("/config/", {{"deviceName", name}, {"language", ""}, {"_1", "Save"}}).body);
        EXPECT_EQ(html.One(successMessage), saved);
        return NumberIn(html);
    }
    std::string Rename(std::string const &name) { return Rename(name, browser); }

    static std::string Name() { return device::Shell("prm get net/hostname"); }

    Html Press(std::string const &button, std::string const &number, std::string const &confirmed = "") {
        return Html(
            browser.Post(historyPage, {{"action", button}, {"number", number}, {"confirmed", confirmed}})
                .body);
    }

    /// What the list says of a set.
    static Strings Lines(Html const &html, std::string const &number) {
        return html.All("//div[@id='set_" + number + "']//li");
    }
};

}  // namespace

TEST_F(HistoryTest, ASaveIsASetThatSaysWhatHasChangedAndIsTakenBackWithItsCommands) {
    Html const html(
        browser.Post(page.path, {{"submit", "Save"}, {"remoteWebEnabled", "y"}, {"remoteIcmpEnabled", "y"}})
            .body);
    device::TakeCommands();
    Strings const lines = html.All(shownChanges);
    std::string const number = NumberIn(html);
    ASSERT_FALSE(lines.empty());

    Html const list(browser.Get(historyPage).body);
    EXPECT_EQ(Lines(list, number), lines);
    EXPECT_NE(list.One("//div[@id='set_" + number + "']//h3").find("UTC, admin, 127.0.0.1"),
              std::string::npos);

    device::Settings const before = device::KeptStore::All();
    Html const undone = Press("Undo", number);
    EXPECT_EQ(undone.One(successMessage), "Undo of " + number + " is done.");
    EXPECT_EQ(device::TakeCommands(), Strings{"/etc/nat_setup.sh web_advanced"});
    EXPECT_NE(device::KeptStore::Changes(before), Settings());
    EXPECT_EQ(undone.Count("//div[@class='history_set'][1]//p[.='Undo of " + number + "']"), 1U);
    EXPECT_EQ(Press("Undo", number).One(successMessage),
              "Nothing to take back: everything is as it was before.");
}

TEST_F(HistoryTest, WhatHasChangedSinceIsAskedForFirst) {
    std::string const original = Name();
    std::string const first = Rename("mast-7");
    Rename("mast-8");
    Html const asked = Press("Undo", first);
    EXPECT_EQ(asked.All("//form[@class='history_question']//li").size(), 1U);
    EXPECT_EQ(Name(), "mast-8\n");
    EXPECT_EQ(Press("Undo", first, "yes").One(successMessage), "Undo of " + first + " is done.");
    EXPECT_EQ(Name(), original);

    Rename("mast-9");
    EXPECT_EQ(Press("Return to before this", first).One(successMessage),
              "Return to before " + first + " is done.");
    EXPECT_EQ(Name(), original);
    for (char const *number : {"0", "-1", "99999999999999999999", "x"})
        EXPECT_EQ(Press("Undo", number).Count(failureMessage), 1U) << number;
}

TEST_F(HistoryTest, OnlyWhatHasChangedIsASetAndSecretsAreNeverShown) {
    std::string const number = Rename("mast-1");
    EXPECT_EQ(Rename("mast-1"), "") << "changes nothing";
    {
        device::RefusedKey const refused("net/hostname");
        Html const html(browser.Post("/config/", {{"deviceName", "mast-2"}, {"language", ""}}).body);
        EXPECT_EQ(html.Count(shownChanges), 0U);
    }
    Fields const cdma = {{"_1", "custom"}, {"_2", "operator"}, {"_3", "hunter22"}, {"_4", "D3"},
                         {"_5", "AT+A"},   {"_6", "READY"},    {"cdma", "Save"}};
    EXPECT_EQ(Html(browser.Post("/config/network/cellular", cdma).body).One(successMessage), saved);
    std::string const changes = browser.Get(historyPage).body;
    EXPECT_NE(changes.find("CDMA password</span>: changed"), std::string::npos);
    EXPECT_EQ(changes.find("hunter22"), std::string::npos);
    EXPECT_EQ(Html(browser.Get(historyPage + std::string("?text=hunter22")).body)
                  .Count("//div[@class='history_set']"),
              0U);
    Answer const list = browser.Get(historyPage + std::string("?text=mast-1"));
    EXPECT_EQ(Html(list.body).One("//div[@class='history_set'][1]/@id"), "set_" + number);
    EXPECT_EQ(Html(browser.Get(historyPage + std::string("?page=/network/ntp")).body)
                  .Count("//div[@id='set_" + number + "']"),
              0U);
}

TEST_F(HistoryTest, AHistoryThatCannotBeWrittenStopsNobodyAndNoneIsKeptUnasked) {
    device::WriteFile("/tmp/no-folder", "");
    for (std::string const file : {"/tmp/no-folder/history.db", "/tmp/history.db", ""}) {
        SCOPED_TRACE(file);
        std::filesystem::remove("/tmp/history.db");
        device::Process process(
            device::Configuration(port, R"("history":{"file":")" + file + R"(","keep":2},)"));
        Browser other = device::Up(address);
        std::string numbers;
        for (char const *name : {"a", "b", "c", "d"})
            numbers += Rename(name, other);
        Html const html(other.Get(historyPage).body);
        bool const works = file == "/tmp/history.db";
        EXPECT_EQ(numbers, works ? "1234" : "");
        EXPECT_EQ(html.Count("//div[@class='history_set']"), works ? 2U : 0U);
        EXPECT_EQ(html.Count("//a[@id='menu_History']"), file.empty() ? 0U : 1U);
        EXPECT_EQ(html.One("//h2[@id='config_page_title']"), file.empty() ? " Firmware " : " History ");
        if (!file.empty() && !works) {
            EXPECT_TRUE(process.WaitForLog("The history cannot be written"));
            EXPECT_NE(html.One(failureMessage).find("The history cannot be read"), std::string::npos);
        }
        if (works) {
            EXPECT_EQ(std::filesystem::status(file).permissions(),
                      std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        }
    }
}

}  // namespace pages

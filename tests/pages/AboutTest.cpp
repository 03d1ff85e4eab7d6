#include <algorithm>

#include "tests/pages/support/Page.h"

namespace pages {

namespace {

constexpr char licences[] = "/usr/share/common-licenses";

class AboutTest : public testing::Test {
  protected:
    AboutTest() {
        device::Shell(std::string("mkdir -p ") + folder + "/inner " + licences + "/test-empty");
        for (char const *name : {"C", "b", "A", ".hidden"})
            device::WriteFile(folder + '/' + name, std::string("notice <") + name + ">\n");
        device::Shell("ln -sf A " + folder + "/link; ln -sf /nowhere " + folder + "/broken");
    }
    ~AboutTest() override { device::Shell("rm -rf " + folder + ' ' + licences + "/test-empty"); }

    std::string const folder = std::string(licences) + "/test-package";
    Browser browser{device::address};
};

std::string Row(std::string const &below) {
    return "//tr[@id='test-package']" + below;
}

}  // namespace

TEST_F(AboutTest, ListsTheNoticesOfEachPackage) {
    Html const page(browser.Get("/config/settings/about").body);
    EXPECT_EQ(page.One("//h2[@id='config_page_title']"), " Open Source Software  Notices ");
    EXPECT_EQ(page.All(Row("//li/a[@class='ossnav']")), (Strings{"A", "b", "broken", "C", "link"}));
    EXPECT_EQ(page.All(Row("//li/a/@href"))[0], "/config/settings/about/test-package/A");
    EXPECT_EQ(page.Count("//tr[@id='test-empty']"), 0U);
    auto const packages = page.All("//table[not(@id)]//tr/@id");
    EXPECT_GT(packages.size(), 1U);
    EXPECT_TRUE(std::is_sorted(packages.begin(), packages.end()));
}

TEST_F(AboutTest, ShowsEachChangeAtOnceThoughTheFoldersAreNotReadAgain) {
    auto const notices = [this] {
        return Html(browser.Get("/config/settings/about").body).All(Row("//li/a[@class='ossnav']"));
    };
    device::Shell("sleep 2.1");  // older folders are remembered
    for (int worker = 0; worker < 12; ++worker)
        notices();
    device::WriteFile(folder + "/D", "");
    EXPECT_EQ(notices(), (Strings{"A", "b", "broken", "C", "D", "link"}));
    device::Shell("rm " + folder + "/D");
    EXPECT_EQ(notices(), (Strings{"A", "b", "broken", "C", "link"})) << "within the same tick";
    device::Shell("cd " + std::string(licences) +
                  "; mkdir test-new; echo >test-new/only; touch -r test-package test-new; "
                  "rm -r test-package; mv test-new test-package");
    EXPECT_EQ(notices(), Strings{"only"});
}

TEST_F(AboutTest, ShowsTheTextOfOneNotice) {
    Html const page(browser.Get("/config/settings/about/test-package/C").body);
    EXPECT_EQ(page.One("//pre"), "notice <C>\n");
    Html const broken(browser.Get("/config/settings/about/test-package/broken").body);
    EXPECT_EQ(broken.One("//pre"), "Failed to access \"" + folder + "/broken\"");
}

TEST_F(AboutTest, OnlyListedNoticesAreShown) {
    // What is not listed shows the list. Other names are none: no route takes them, so that they show the
    // Firmware page.
    std::pair<char const *, char const *> const cases[] = {
        {"/test-package/none", " Open Source Software  Notices "},
        {"/none/A", " Open Source Software  Notices "},
        {"/test-package/inner", " Open Source Software  Notices "},
        {"/test-package/.hidden", " Firmware "},
        {"/test-package/%2e%2e", " Firmware "},
    };
    for (auto const &[path, title] : cases) {
        Html const html(browser.Get(std::string("/config/settings/about") + path).body);
        EXPECT_EQ(html.One("//h2[@id='config_page_title']"), title) << path;
        EXPECT_EQ(html.Count("//tr[@id='test-package']//pre"), 0U) << path;
    }
}

}  // namespace pages

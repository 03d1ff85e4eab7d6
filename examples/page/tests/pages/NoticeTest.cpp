#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class NoticeTest : public PageTest {
  protected:
    NoticeTest()
        : PageTest({.path = "/config/settings/notice",
                    .folder = "system/notice/",
                    .settings = {{"enabled", "no"}, {"text", "old"}},
                    .applies = {"/usr/sbin/notice.sh"}}) {}

    device::ReplacedFile const shown{"/etc/motd", ""};
};

}  // namespace

TEST_F(NoticeTest, IsStoredAndPutIntoEffect) {
    Show({{"enabled", "yes"}}, {{"cfg_notice_enabled", "y"}, {"cfg_notice_text", "old"}});
    Run({{"enabled", "y"}, {"text", "Ask <Ann>"}, {"save", "Save"}},
        {{.written = {{"enabled", "yes"}, {"text", "Ask <Ann>"}}},
         {.before = {{"enabled", "yes"}, {"text", "Ask <Ann>"}}, .commands = {}},
         {.refused = "text", .failure = notSaved, .written = {{"enabled", "yes"}}},
         {.fields = {{"text", ""}},
          .failure = invalid,
          .errors = {"Invalid length; minimum 1, maximum 200"}}});
    EXPECT_EQ(device::ReadFile("/etc/motd"), "Ask <Ann>\n");
}

TEST_F(NoticeTest, TheStatusTellsWhatIsInEffect) {
    device::WriteFile("/etc/motd", "Ask Ann\n");
    EXPECT_EQ(browser.Call("notice_status").result, R"({"notice":"Ask Ann\n"})");
}

}  // namespace pages

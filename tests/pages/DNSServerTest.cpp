#include "tests/pages/support/Page.h"

namespace pages {

namespace {

class DNSServerTest : public PageTest {
  protected:
    DNSServerTest()
        : PageTest({"/config/network/dns_server",
                    "net/lan_dns",
                    {{"1", "10.0.0.1"}, {"2", "10.0.0.2"}, {"_suffix", "old"}, {"_is_append", "yes"}},
                    {},
                    "DNS server settings updated, reboot to take effect"}) {}
};

constexpr char append[] = "//input[@name='isAppend']";

}  // namespace

TEST_F(DNSServerTest, ShowsTheStoredSettings) {
    Html const html = Show({}, {{"config_page_title", " Custom DNS Servers "}, {append, "y"}});
    EXPECT_EQ(html.All("//*[@id='dns_server_config']//input[@type='text']/@value"),
              (Strings{"10.0.0.1", "10.0.0.2", "old"}));
}

TEST_F(DNSServerTest, StoresForTheNextStartAndShowsWhatWasPosted) {
    Run({{"dnsServer0", "8.8.8.8"}, {"dnsServer1", ""}, {"dnsSuffix", "<i>"}},
        {{.written = {{"1", "8.8.8.8"}, {"2", ""}, {"_suffix", "<i>"}, {"_is_append", "no"}},
          .shown = {{"cfg_eth1_dns0", "8.8.8.8"}, {"//input[@name='dnsSuffix']", "<i>"}, {append, ""}}},
         {.before = {{"_is_append", "no"}},
          .fields = {{"isAppend", "y"}},
          .written = {{"1", "8.8.8.8"}, {"2", ""}, {"_suffix", "<i>"}, {"_is_append", "yes"}},
          .shown = {{append, "y"}}},
         {.fields = {{"dnsSuffix", "x\nnameserver 10.9.9.9"}},
          .failure = invalid,
          .errors = NoControls("DNS Suffix"),
          .shown = {{"cfg_eth1_dns0", "8.8.8.8"}}},
         {.refused = "_suffix",
          .failure = notSaved,
          .written = {{"1", "8.8.8.8"}, {"2", ""}},
          .shown = {{"cfg_eth1_dns0", "8.8.8.8"}, {"//input[@name='dnsSuffix']", "<i>"}}}});
}

}  // namespace pages

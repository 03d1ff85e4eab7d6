#include "WebApps/webconfig/util/VpnConfiguration.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using webconfig::util::HarmInVpnConfiguration;

std::string const prefix = "The configuration is refused: line ";
std::string const reason = "\", which could run programs or reach files";

TEST(VpnConfiguration, LinesThatRunProgramsOrReachFilesAreFoundHoweverTheyAreWritten) {
    std::string const longLine(300, 'A');
    std::pair<std::string, std::string> const harmful[] = {
        {"up /bin/sh", "up"},
        {"client\r\n\r\n \t --route-up x", "route-up"},
        {"\xEF\xBB\xBFplugin x", "plugin"},
        {"\"up\" x", "up"},
        {"'down'x", "down"},
        {"\"u\"\\p x", ""},  // two words for OpenVPN as well
        {"\\up x", "up"},
        {"tls-verify\v\"x\"", "tls-verify"},
        {"<up>\nx\n</up>", "up"},
        {"<connection>\nremote x\nipchange x\n</connection>", "ipchange"},
        {"<ca>\nlog x\n</ca>", "log"},  // where the section ends is OpenVPN's to say
        {std::string("# text\0up x", 11), "up"},
        {"setenv opt setenv opt --script-security 2", "script-security"},
        {"setenv LD_PRELOAD x", "setenv"},
        {"management-client", "management"},
        {"auth-user-pass /etc/shadow", "auth-user-pass"},
        {"http-proxy host 80 /etc/shadow", "http-proxy"},
        {"config other", "config"},
    };
    for (auto const &[text, directive] : harmful) {
        std::string const harm = HarmInVpnConfiguration(text);
        EXPECT_TRUE(directive.empty() ? harm.empty() : harm.ends_with(" has \"" + directive + reason))
            << text << ": " << harm;
    }
    EXPECT_EQ(HarmInVpnConfiguration("client\n\n# up\n;up\nup x\n"), prefix + "5 has \"up" + reason);
    EXPECT_EQ(HarmInVpnConfiguration(longLine + "</ca>\n"), prefix + "1 is too long");

    EXPECT_EQ(HarmInVpnConfiguration("client\ndev tun\nremote up 1194 udp\nauth-user-pass\nsetenv UV_ID 1\n"
                                     "setenv opt block-outside-dns\nhttp-proxy host 80 auto\nuser nobody\n"
                                     "remote-cert-tls server # up\nverb 3\nup-delay\npush \"up\"\n"
                                     "<ca>\n-----BEGIN CERTIFICATE-----\n" +
                                     longLine + "\n-----END CERTIFICATE-----\n</ca>\n"),
              "");
}

}  // namespace

#include "WebApps/webconfig/util/VpnConfiguration.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using webconfig::util::HarmInVpnConfiguration;

TEST(VpnConfiguration, LinesThatRunProgramsOrReachFilesAreFoundHoweverTheyAreWritten) {
    std::string const longLine(300, 'A');
    for (std::string const &text :
         {std::string("up x"), std::string("client\r\n \t --up x"), std::string("\xEF\xBB\xBFup x"),
          std::string("'up'x"), std::string("\\u\"p\" x\n\"u\\p\"\vx"), std::string("<up>\nx\n</up>"),
          std::string("<connection>\nup x\n</connection>"), std::string("<ca>\nup x\n</ca>"),
          std::string("# text\0up x", 11), std::string("setenv opt 'setenv' opt --up x"),
          std::string("setenv LD_PRELOAD x"), std::string("management-client"),
          std::string("auth-user-pass /etc/shadow"), std::string("http-proxy host 80 /etc/shadow"),
          longLine + "</ca>\n"})
        EXPECT_FALSE(HarmInVpnConfiguration(text).empty()) << text;
    EXPECT_EQ(
        HarmInVpnConfiguration("client\n\n# up\n;up\ntls-verify x\n").english,
        "The configuration is refused: line 5 has \"tls-verify\", which could run programs or reach files");
    EXPECT_EQ(HarmInVpnConfiguration("client\ndev tun\nremote up 1194 udp\nauth-user-pass\nsetenv UV_ID 1\n"
                                     "setenv opt block-outside-dns\nhttp-proxy host 80 auto\nuser nobody\n"
                                     "remote-cert-tls server # up\nup-delay\npush \"up\"\n\"u\"\\p x\n"
                                     "<ca>\n-----BEGIN CERTIFICATE-----\n" +
                                     longLine + "\n-----END CERTIFICATE-----\n</ca>\n")
                  .english,
              "");
}

}  // namespace

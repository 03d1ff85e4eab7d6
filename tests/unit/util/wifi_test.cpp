#include "WebApps/webconfig/util/Wifi.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "WebApps/webconfig/util/Command.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;

/// The key as the standard derives it.
std::string DerivedKey(std::string const &ssid, std::string const &passPhrase) {
    std::array<unsigned char, 32> key{};
    PKCS5_PBKDF2_HMAC_SHA1(passPhrase.data(), static_cast<int>(passPhrase.size()),
                           reinterpret_cast<unsigned char const *>(ssid.data()),
                           static_cast<int>(ssid.size()), 4096, key.size(), key.data());
    std::string text;
    for (unsigned const byte : key)
        text += std::string{"0123456789abcdef"[byte / 16], "0123456789abcdef"[byte % 16]};
    return text;
}

TEST(Wifi, WithAHardenedShellTheKeyIsThatOfTheTextAsTyped) {
    std::string printable;
    for (char c = ' '; c <= '~'; ++c)
        printable += c;
    HardenShell(true);
    std::string const ssids[] = {
        "plain", "My \"net\"", "psk=1", "#psk=", "ssid=\"", "$(reboot)", "`id`", "\\", "-n", "caf\xC3\xA9",
    };
    for (std::string const &ssid : ssids)
        EXPECT_EQ(getPsk(ssid, "pass \"$HOME\" `id` \\"), DerivedKey(ssid, "pass \"$HOME\" `id` \\")) << ssid;
    for (std::string const &passPhrase :
         {printable.substr(0, 63), printable.substr(32), std::string("psk=psk=")})
        EXPECT_EQ(getPsk("net", passPhrase), DerivedKey("net", passPhrase)) << passPhrase;
    for (std::string const &none : {std::string("a new\nline"), std::string(7, 'x'), std::string(64, 'x')})
        EXPECT_EQ(getPsk("net", none), "") << none;
    HardenShell(false);
}

TEST(Wifi, PasswordsAreHashedInUtf16) {
    // Two, three and four bytes; the last one becomes a pair of code units.
    EXPECT_EQ(getNtPasswordHash("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"),
              "hash:4cd26bea0e9c02c16bcbc65c7a89bd1a" + std::string(1, '\0'));
}

TEST(Wifi, PasswordsThatAreNoTextGiveNoHash) {
    for (char const *password : {"abc\xC3", "abc\xE2\x82", "\xF0\x9F\x98"})
        EXPECT_EQ(getNtPasswordHash(password), "");
    for (char const *password : {"\xFF", "a\xC3(b", "\x80", "\xF5\x80\x80\x80", "\xC0\x80"})
        EXPECT_THROW(getNtPasswordHash(password), std::range_error);
}

TEST(Wifi, WithoutTheLegacyProviderThereIsNoHashButALogLine) {
    LogCapture log(booster::log::error);
    ::setenv("OPENSSL_MODULES", "/none", 1);
    EXPECT_EQ(getNtPasswordHash("password"), "");
    ::unsetenv("OPENSSL_MODULES");
    EXPECT_TRUE(log.Contains("error: No MD4, which is in the legacy provider of OpenSSL: error:"));
}

}  // namespace

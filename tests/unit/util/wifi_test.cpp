#include "WebApps/webconfig/util/Wifi.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "WebApps/webconfig/util/Command.h"
#include "WebApps/webconfig/util/CountryChannels.h"
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
    for (unsigned const byte : key) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02x", byte);
        text += digits.data();
    }
    return text;
}

TEST(Wifi, ThePassPhraseHasEightToSixtyThreeCharacters) {
    for (std::size_t const length : {1, 7, 64, 5000})
        EXPECT_EQ(getPsk("net", std::string(length, 'x')), "") << length;
    for (std::size_t const length : {8, 63})
        EXPECT_EQ(getPsk("net", std::string(length, 'x')), DerivedKey("net", std::string(length, 'x')));
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
    EXPECT_EQ(getPsk("net", "a new\nline"), "") << "no such pass phrase";
    HardenShell(false);
}

TEST(Wifi, PasswordsAreHashedInUtf16) {
    struct {
        std::string password;
        std::string hash;
    } const cases[] = {
        {"password", "8846f7eaee8fb117ad06bdd830b7586c"},
        {"", "31d6cfe0d16ae931b73c59d7e0c089c0"},
        {"SecREt01", "cd06ca7c7e10c99b1d33b7485a2ed808"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(getNtPasswordHash(c.password), "hash:" + c.hash + '\0') << c.password;
    EXPECT_EQ(getNtPasswordHash("password").size(), 38U);
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
    auto const lines = log.Take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].find("error: No MD4, which is in the legacy provider of OpenSSL: error:"), 0U)
        << lines[0];
}

TEST(Wifi, SomeRegulatoryDomainsHaveANameOfTheirOwn) {
    for (auto const &[code, name] :
         {std::pair("FCC", "FCC"), std::pair("AU", "AU,NZ"), std::pair("WW", "WW (World Mode)"),
          std::pair("EN440", "EN440 (Europe)"), std::pair("au", "au"), std::pair("", "")})
        EXPECT_EQ(getRegulatoryFriendlyName(code), name);
}

TEST(Wifi, WithoutItsDatabaseTheChannelTableIsEmptyAndTriedAgain) {
    LogCapture log(booster::log::error);
    EXPECT_TRUE(getCountryChannels().empty());
    EXPECT_TRUE(ChannelEntries("US").empty());
    EXPECT_EQ(log.Take(),
              std::vector<std::string>(
                  2, "error: Error: Cannot open countryChannels database for reading (CountryChannels)"));
}

}  // namespace

#include "WebApps/webconfig/util/Wifi.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "WebApps/webconfig/util/Command.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;

// What WPA's standard gives as examples.
TEST(Wifi, TheKeyIsThatOfTheStandardWhoeverComputesIt) {
    std::tuple<std::string, std::string, char const *> const examples[] = {
        {"IEEE", "password", "f42c6fc52df0ebef9ebb4b90b38a5f902e83fe1b135a70e23aed762e9710a12e"},
        {"ThisIsASSID", "ThisIsAPassword",
         "0dc0d6eb90555ed6419756b9a15ec3e3209b63df707dd508d14581f8982721af"},
        {std::string(32, 'Z'), std::string(32, 'a'),
         "becb93866bb8c3832cb777c2f559807c8c59afcb6eae734885001300a981cc62"},
    };
    for (bool const hardened : {false, true}) {
        HardenShell(hardened);
        HideSecretsFromCommands(hardened);
        for (auto const &[ssid, passPhrase, key] : examples)
            EXPECT_EQ(getPsk(ssid, passPhrase), key) << hardened;
        for (std::string const &none :
             {std::string(), std::string("a new\nline"), std::string(7, 'x'), std::string(64, 'x')})
            EXPECT_EQ(getPsk("net", none), "") << none;
    }
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

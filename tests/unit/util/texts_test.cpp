#include <gtest/gtest.h>

#include "WebApps/webconfig/util/Strings.h"
#include "WebApps/webconfig/util/Utf8.h"

namespace {

using namespace webconfig::util;

TEST(CleanText, ReplacesBytesThatAreNoText) {
    std::pair<std::string, std::string> const cases[] = {
        {"", ""},
        {"tab\tline\r\n ~", "tab\tline\r\n ~"},
        {"é€😀\u00A0\uFFFD\U0010FFFF", "é€😀\u00A0\uFFFD\U0010FFFF"},
        {std::string("a\0b", 3), "a\uFFFDb"},
        {"\x1B[31mred\x7F\b", "\uFFFD[31mred\uFFFD\uFFFD"},
        {"\xC2\x9B"
         "31m",
         "\uFFFD\uFFFD31m"},  // the 8-bit form of the same command
        {"\xFF\xFE", "\uFFFD\uFFFD"},
        {"\xC0\xAF", "\uFFFD\uFFFD"},  // over-long
        {"\xE0\x80\xAF", "\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x8F\xBF\xBF", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last code point
        {"caf\xE9 x", "caf\uFFFD x"},                      // Latin-1
        {"\xE2\x82...", "\uFFFD\uFFFD..."},                // a character that was cut
        {"\xF0\x9F\x98", "\uFFFD\uFFFD\uFFFD"},
        {"\xE2\x82\xE2\x82\xAC", "\uFFFD\uFFFD€"},
    };
    for (auto const &[bytes, text] : cases)
        EXPECT_EQ(CleanText(bytes), text) << testing::PrintToString(bytes);
}

TEST(Strings, TextBetween) {
    struct {
        char const *text;
        char const *marker;
        char const *ends;
        char const *part;
    } const cases[] = {
        {"/O=Field/CN=vpn-1.example/L=x", "CN=", "-,/", "vpn"},
        {"/O=Field/CN=vpn", "CN=", ",/", "vpn"},
        {"/O=Field/OU=", "OU=", ",/", ""},
        {"/O=/CN=x", "O=", ",/", "/CN=x"},  // an end at once does not cut
        {"/CN=a/CN=b", "CN=", ",/", "a"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(TextBetween(c.text, c.marker, c.ends), c.part) << c.text << ' ' << c.marker;
}

}  // namespace

#include "WebApps/webconfig/util/ShellQuote.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "WebApps/webconfig/util/Commands.h"

namespace {

using namespace webconfig::util;

class HardenedShell : public testing::Test {
  protected:
    HardenedShell() { HardenShell(true); }
    ~HardenedShell() override { HardenShell(false); }
};

std::vector<std::string> HostileValues() {
    std::string printable;
    for (char c = ' '; c <= '~'; ++c)
        printable += c;
    return {
        printable,
        std::string(printable.rbegin(), printable.rend()),
        "x\"; echo broken; \"",
        "x'; echo broken; '",
        "$(echo broken)",
        "`echo broken`",
        "${HOME}$HOME$1",
        "ends in \\",
        "\\\" echo broken",
        "two\nlines; echo broken\n",
        "*?[a-z] ~ ~root {a,b} !! #",
        " blanks \t around ",
        "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 \x81\x88\xFF",
    };
}

TEST_F(HardenedShell, ReadsTheCharactersAsTheyAre) {
    for (std::string const &value : HostileValues()) {
        EXPECT_EQ(ShellCommand("printf '[%s]' \"a " + ShellQuote(value, ShellPosition::DoubleQuoted) + " z\"",
                               4096),
                  "[a " + value + " z]");
        EXPECT_EQ(ShellCommand("printf '[%s]' " + ShellQuote(value, ShellPosition::Bare) + " z", 4096),
                  '[' + value + "][z]");
    }
    std::string const cut("a\"\0; b", 6);
    EXPECT_EQ(ShellQuote(cut, ShellPosition::DoubleQuoted), "a\\\"; b");
    EXPECT_EQ(ShellQuote(cut, ShellPosition::Bare), "'a\"; b'");
}

TEST_F(HardenedShell, OrdinaryValuesStayByteForByte) {
    for (std::string const value : {"", "FCC", "/tmp/a-b_c.bin", "user@host:80", "50%", "a=b,c+d"}) {
        EXPECT_EQ(ShellQuote(value, ShellPosition::DoubleQuoted), value);
        EXPECT_EQ(ShellQuote(value, ShellPosition::Bare), value);
    }
    EXPECT_EQ(ShellQuote("My network's #1", ShellPosition::DoubleQuoted), "My network's #1");
}

TEST(UnhardenedShell, GetsTheValuesUnchanged) {
    for (std::string const &value : HostileValues()) {
        EXPECT_EQ(ShellQuote(value, ShellPosition::DoubleQuoted), value);
        EXPECT_EQ(ShellQuote(value, ShellPosition::Bare), value);
    }
}

}  // namespace

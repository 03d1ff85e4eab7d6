#include "WebApps/webconfig/util/Command.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "WebApps/webconfig/util/Commands.h"

namespace {

using namespace webconfig::util;

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

TEST(HardenedShell, ReadsTheCharactersAsTheyAre) {
    for (std::string const &value : HostileValues()) {
        Command const command =
            Command("printf '[%s]'").Arg(value).SingleQuoted(value).DoubleQuoted(value).Then("z | cat");
        std::string const read = '[' + value + ']';
        EXPECT_EQ(ShellCommand(command, 4096), read + read + read + "[z]");
    }
    std::string const cut("a\"\0; b", 6);
    EXPECT_EQ(std::string(Command().Arg(cut).SingleQuoted(cut).DoubleQuoted(cut)),
              R"('a"; b' 'a"; b' "a\"; b")");
}

TEST(HardenedShell, OrdinaryValuesStayByteForByte) {
    for (std::string const value : {"", "FCC", "/tmp/a-b_c.bin", "user@host:80", "50%", "a=b,c+d"}) {
        EXPECT_EQ(std::string(Command("run").Arg(value).SingleQuoted(value).DoubleQuoted(value)),
                  "run " + value + " '" + value + "' \"" + value + '"');
    }
    EXPECT_EQ(std::string(Command("run").DoubleQuoted("My network's #1")), "run \"My network's #1\"");
    EXPECT_EQ(ShellCommand("cat", 10, "given\n"), "given\n");
    EXPECT_EQ(ShellCommand("cat", 10, std::string(5000, 'x')), "") << "nothing rather than a part";
}

static_assert(std::is_constructible_v<Command, ConstantText>);
static_assert(!std::is_constructible_v<Command, std::string>, "a value is no command line");

}  // namespace

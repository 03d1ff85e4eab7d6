#include <booster/log.h>
#include <booster/regex.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace {

using namespace std::string_literals;

TEST(RegexTest, MatchWantsTheWholeTextAndSearchAnyPart) {
    std::tuple<char const *, std::string, bool, bool> const cases[] = {
        {"a|ab", "ab", true, true},   {"a", "ba", false, true},
        {"a$", "a\n", false, true},   {"(a+)+", std::string(60, 'a') + '!', false, true},
        {"[^/]*", "a\n", true, true}, {".", "\n", false, false},
        {"", "", true, true},         {"a.b", "a\0b"s, true, true},
    };
    for (auto const &[pattern, text, matches, found] : cases) {
        booster::regex const expression(pattern);
        EXPECT_EQ(booster::regex_match(text, expression), matches) << pattern;
        EXPECT_EQ(booster::regex_search(text, expression), found) << pattern;
    }
    EXPECT_THROW(booster::regex("(?:x"), booster::regex_error);
}

TEST(LogTest, MacrosAreFilteredByLevelAndModuleAndMessagesAreNot) {
    auto &logger = booster::log::logger::instance();
    std::ostringstream lines;
    auto const sink = std::make_shared<booster::log::sinks::stream>(lines);
    logger.add_sink(sink);
    int evaluated = 0;
    auto const count = [&evaluated] { return ++evaluated; };
    BOOSTER_WARNING("m") << count();
    EXPECT_EQ(evaluated, 0);
    logger.set_log_level(booster::log::debug, "m");
    BOOSTER_DEBUG("m") << "seen " << count();
    BOOSTER_DEBUG("other") << "unseen " << count();
    booster::log::message(booster::log::debug, "other", "some/folder", 7).out() << "direct";
    EXPECT_EQ(evaluated, 1);

    static std::regex const format(
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d; m, debug: seen 1 \(booster_test\.cpp:\d+\)\n)"
        R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d; other, debug: direct \(folder:7\)\n)");
    EXPECT_TRUE(std::regex_match(lines.str(), format)) << lines.str();
    logger.remove_sink(sink);
    logger.reset_log_level("m");
}

}  // namespace

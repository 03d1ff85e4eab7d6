#include <booster/backtrace.h>
#include <booster/log.h>
#include <booster/regex.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace {

using namespace std::string_literals;

TEST(RegexTest, MatchWantsTheWholeTextAndSearchAnyPart) {
    struct {
        char const *pattern;
        std::string text;
        bool matches;
        bool found;
    } const cases[] = {
        {"a|ab", "ab", true, true},   {"a", "ba", false, true},
        {"a$", "a\n", false, true},   {"(a+)+", std::string(60, 'a') + '!', false, true},
        {"[^/]*", "a\n", true, true}, {".", "\n", false, false},
        {"", "", true, true},         {"a.b", "a\0b"s, true, true},
    };
    for (auto const &c : cases) {
        booster::regex const expression(c.pattern);
        EXPECT_EQ(booster::regex_match(c.text, expression), c.matches) << c.pattern;
        EXPECT_EQ(booster::regex_search(c.text, expression), c.found) << c.pattern;
    }
    EXPECT_THROW(booster::regex("(?:x"), booster::regex_error);
    EXPECT_TRUE(booster::regex_match("ABC"s, booster::regex("abc", booster::regex::icase)));
    EXPECT_THROW(booster::regex_match("x"s, booster::regex()), booster::regex_error);
}

TEST(RegexTest, GroupsThatTookNoPartAreUnmatchedAndEmpty) {
    std::string const text = "--key=value";
    booster::smatch match;
    ASSERT_TRUE(booster::regex_match(text, match, booster::regex("--(\\w+)(x)?(?:=(.*))?")));
    EXPECT_EQ(match.size(), 4U);
    EXPECT_EQ(match[1].str(), "key");
    EXPECT_FALSE(match[2].matched);
    EXPECT_EQ(match[2].str(), "");
    EXPECT_EQ(match[3].first - text.begin(), 6);
    EXPECT_EQ(match[9].str(), "");
    EXPECT_FALSE(booster::regex_match(text, match, booster::regex("no")));
    EXPECT_EQ(match.size(), 0U);
}

class LogTest : public testing::Test {
  protected:
    LogTest() { logger.add_sink(sink); }
    ~LogTest() override {
        logger.remove_sink(sink);
        logger.reset_log_level();
        logger.set_default_level(booster::log::error);
    }

    booster::log::logger &logger = booster::log::logger::instance();
    std::ostringstream lines;
    std::shared_ptr<booster::log::sinks::stream> sink = std::make_shared<booster::log::sinks::stream>(lines);
};

TEST_F(LogTest, MacrosAreFilteredByLevelAndModuleAndMessagesAreNot) {
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
}

TEST_F(LogTest, RemovedSinksGetNothing) {
    logger.remove_all_sinks();
    BOOSTER_ERROR("m") << "gone";
    EXPECT_EQ(lines.str(), "");
    EXPECT_THROW(booster::log::logger::string_to_level("loud"), booster::invalid_argument);
}

TEST(BacktraceTest, ExceptionsRememberWhereTheyWereMade) {
    booster::runtime_error const error("text");
    std::exception const &plain = error;
    EXPECT_GT(error.stack_size(), 0U);
    std::ostringstream out;
    out << booster::trace(plain);
    EXPECT_EQ(out.str(), error.trace());
    EXPECT_EQ(out.str().substr(0, 2), "0x");
    std::runtime_error const traceless("text");
    std::ostringstream nothing;
    nothing << booster::trace(traceless);
    EXPECT_EQ(nothing.str(), "");
}

}  // namespace

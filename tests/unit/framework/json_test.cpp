#include <cppcms/json.h>

#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/framework/failure.h"

namespace json = cppcms::json;
using namespace std::string_literals;

namespace {

json::value parsed(std::string const &text) {
    json::value result;
    char const *begin = text.data();
    EXPECT_TRUE(result.load(begin, text.data() + text.size(), true)) << text;
    return result;
}

std::string nested(int depth) {
    return std::string(static_cast<std::size_t>(depth), '[') +
           std::string(static_cast<std::size_t>(depth), ']');
}

TEST(Json, AcceptedTexts) {
    std::pair<std::string, char const *> const cases[] = {
        {" \t\r\n null ", "null"},
        {"[true,false]// last", "[true,false]"},
        {R"({"b":1,"a":{},"c":[],})", R"({"a":{},"b":1,"c":[]})"},
        {"// first\n[ // one\n 01,1.,-65.5,1e3, ]", "[1,1,-65.5,1000]"},
        {R"("\"\\\/\b\f\n\r\t")", R"("\"\\/\b\f\n\r\t")"},
        {R"("\u0041\u00e9\u20AC\ud83d\uDE00\u0000")", "\"A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\\u0000\""},
        {"\"\x7F\xC2\x80\"", "\"\x7F\xC2\x80\""},
    };
    for (auto const &[text, compact] : cases)
        EXPECT_EQ(parsed(text).save(), compact) << text;
    EXPECT_EQ(parsed(nested(512)).type(), json::is_array);
}

TEST(Json, RejectedTextsNameTheLine) {
    std::vector<std::pair<std::string, int>> cases = {
        {"\n\n", 3}, {"{\"a\":1,\n\"a\":2}", 2}, {"[1\n2]", 2}, {"[\n\"a\nb\"]", 2}};
    std::istringstream texts(
        R"(|/* */ 1|'a'|{a:1}|[,]|{,}|{"a" 1}|{"a":1|[1|+1|.5|-|1e|1e999|0x10|NaN|tru|1 2|"a|"\x"|"\u12g4")"
        R"(|"\ud800"|"\ud800\u0041"|"\udc00")"
        "|\"\t\"|\xEF\xBB\xBF{}|\"\xFF\"|\"\xC0\x80\"|\"\xED\xA0\x80\"|\"\xE2\x82\"");
    for (std::string text; std::getline(texts, text, '|');)
        cases.emplace_back(text, 1);
    cases.emplace_back(nested(513), 1);
    cases.emplace_back(std::string(100'000, '['), 1);
    for (auto const &[text, expected] : cases) {
        json::value v = "old";
        int line = -1;
        std::istringstream in(text);
        EXPECT_FALSE(v.load(in, true, &line)) << text.substr(0, 40);
        EXPECT_EQ(line, expected) << text.substr(0, 40);
        EXPECT_EQ(v, json::value("old"));
    }
}

TEST(Json, NumbersHaveSixteenSignificantDigits) {
    json::array const numbers{0, -0.0, -65.5, 0.1, 1.0 / 3, 1e10, 1e15, 1e16, 123456789012345678.0, 1e-7};
    EXPECT_EQ(
        json::value(numbers).save(),
        "[0,-0,-65.5,0.1,0.3333333333333333,10000000000,1000000000000000,1e+16,1.234567890123457e+17,1e-07]");
}

TEST(Json, StringsAreEscapedAsLittleAsPossible) {
    EXPECT_EQ(json::to_json("a\"\\\b\f\n\r\t\x01\x1F\0/<'\x7F\xFF"s),
              "\"a\\\"\\\\\\b\\f\\n\\r\\t\\u0001\\u001f\\u0000/<'\x7F\xFF\"");
}

TEST(Json, FailuresSayWhatIsWrong) {
    json::value const v = parsed(R"({"s":"x","n":1.5,"t":true,"neg":-1,"big":1e30,"arr":[1]})");
    std::string const bad = "cppcms::json::bad_cast";
    EXPECT_EQ(failure([&] { v.get<std::string>("a.b"); }), bad + ": Value not found at a.b");
    EXPECT_EQ(failure([&] { v.get<std::string>("n"); }),
              bad + ": invalid type error converting from number to string");
    EXPECT_EQ(failure([&] { v.get<int>("n"); }), bad);
    EXPECT_EQ(failure([&] { v.get<unsigned>("neg"); }), bad);
    EXPECT_EQ(failure([&] { v.get<long long>("big"); }), bad);
    EXPECT_EQ(failure([&] { v["q"]; }), bad + ": Member q not found");
    EXPECT_EQ(failure([&] { v["arr"][7]; }), bad + ": Index out of range");
    EXPECT_EQ(failure([&] { json::value().at("s..b", 1); }), bad + ": Invalid path provided");
    EXPECT_THROW(json::value().save(), json::bad_value_cast);
}

TEST(Json, FallbacksCoverMissingAndWrongTypes) {
    json::value const v = parsed(R"({"a":{"n":1,"f":1.5,"s":"x"}})");
    EXPECT_EQ(v.get("a.n", 7), 1);
    EXPECT_EQ(v.get("a.f", 7), 7);
    EXPECT_EQ(v.get("a.q", 7), 7);
    EXPECT_EQ(v.get("a.s.n", 7), 7);
    EXPECT_EQ(v.get("a..n", 7), 7);
    EXPECT_EQ(v.get("a.n", "text"), "text");
    EXPECT_EQ(v.get("a.s", "text"), "x");
}

TEST(Json, WritingMakesWhatIsMissing) {
    json::value v = "text";
    v.set("a.b.c", 1);
    v.at("a.b.c.d", 2);
    v["list"][2] = "x";
    EXPECT_EQ(v.save(), R"({"a":{"b":{"c":{"d":2}}},"list":[null,null,"x"]})");

    v.set("a.copy", v);  // a part of itself
    EXPECT_EQ(v.get<int>("a.copy.a.b.c.d"), 2);
    v = v["list"];
    EXPECT_EQ(v.save(), R"([null,null,"x"])");
}

TEST(Json, ConvertsFromAndToOrdinaryTypes) {
    json::value v;
    v["c"] = 'A';
    v["u"] = 4000000000U;
    v["b"] = true;
    v["v"] = std::vector<std::string>{"x", "y"};
    v["a"] = json::array{1, "two", json::null()};
    EXPECT_EQ(v.save(), R"({"a":[1,"two",null],"b":true,"c":65,"u":4000000000,"v":["x","y"]})");
    EXPECT_EQ(v.get<std::vector<std::string>>("v"), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(v.get<unsigned>("u"), 4000000000U);
    EXPECT_THROW(v.get<int>("u"), json::bad_value_cast);
    EXPECT_THROW(v.get<std::vector<int>>("v"), json::bad_value_cast);
}

}  // namespace

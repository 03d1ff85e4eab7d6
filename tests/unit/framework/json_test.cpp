#include <cppcms/json.h>

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
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
    for (std::string const text : {"",
                                   "/* */ 1",
                                   "\xEF\xBB\xBF{}",
                                   "'a'",
                                   "{a:1}",
                                   "[,]",
                                   "{,}",
                                   "{\"a\" 1}",
                                   "{\"a\":1",
                                   "[1",
                                   "+1",
                                   ".5",
                                   "-",
                                   "1e",
                                   "1e999",
                                   "0x10",
                                   "NaN",
                                   "TRUE",
                                   "tru",
                                   "1 2",
                                   "\"\t\"",
                                   "\"a",
                                   R"("\x")",
                                   R"("\u12g4")",
                                   R"("\ud800")",
                                   R"("\ud800\u0041")",
                                   R"("\udc00")",
                                   "\"\xFF\"",
                                   "\"\xC0\x80\"",
                                   "\"\xED\xA0\x80\"",
                                   "\"\xE2\x82\""})
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

TEST(Json, ReadsValueByValueFromAStream) {
    std::istringstream in(R"({"a":1} 2"x"[]rest)");
    json::value a, b, c, d, e = 5;
    in >> a >> b >> c >> d;
    ASSERT_TRUE(in.good());
    EXPECT_EQ(a.get<int>("a"), 1);
    EXPECT_EQ(b.number(), 2);
    EXPECT_EQ(c.str(), "x");
    EXPECT_EQ(d.array().size(), 0U);
    in >> e;
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(e.number(), 5);

    std::string const text = "12,";
    char const *begin = text.data();
    int line = -1;
    ASSERT_TRUE(a.load(begin, text.data() + text.size(), false, &line));
    EXPECT_EQ(*begin, ',');
    EXPECT_EQ(line, -1);
}

TEST(Json, NumbersHaveSixteenSignificantDigits) {
    json::array const numbers{0, -0.0, -65.5, 0.1, 1.0 / 3, 1e10, 1e15, 1e16, 123456789012345678.0, 1e-7};
    EXPECT_EQ(
        json::value(numbers).save(),
        "[0,-0,-65.5,0.1,0.3333333333333333,10000000000,1000000000000000,1e+16,1.234567890123457e+17,1e-07]");
    std::ostringstream out;
    out << std::hex << std::setw(10) << json::value(255);
    EXPECT_EQ(out.str(), "255");
    EXPECT_EQ(out.precision(), 16);
}

TEST(Json, ReadableLayout) {
    EXPECT_EQ(parsed(R"({"a":"x","arr":[null,true],"o":{"p":1}})").save(json::readable),
              "{\n\t\"a\" :\t\"x\",\n\t\"arr\" :\t[\n\t\tnull,\n\t\ttrue\n\t]\n\t,\n"
              "\t\"o\" :\t{\n\t\t\"p\" :\t1\n\t}\n\t\n}\n");
    EXPECT_EQ(json::value(json::object()).save(json::readable), "{\n\t\n}\n");
}

TEST(Json, StringsAreEscapedAsLittleAsPossible) {
    EXPECT_EQ(json::to_json("a\"\\\b\f\n\r\t\x01\x1F\0/<'\x7F\xFF"s),
              "\"a\\\"\\\\\\b\\f\\n\\r\\t\\u0001\\u001f\\u0000/<'\x7F\xFF\"");
}

TEST(Json, WhatIsWrittenBeforeAnUndefinedPartStays) {
    json::value v;
    v["a"] = 1;
    v["b"];
    std::ostringstream out;
    EXPECT_EQ(failure([&] { out << v; }), "cppcms::json::bad_cast: Can't write undefined value to stream");
    EXPECT_EQ(out.str(), R"({"a":1,"b":)");
}

TEST(Json, FailuresSayWhatIsWrong) {
    json::value v = parsed(R"({"s":"x","n":1.5,"t":true,"neg":-1,"big":1e30,"null":null,"arr":[1],"o":{}})");
    json::value const &c = v;
    std::string const bad = "cppcms::json::bad_cast";
    EXPECT_EQ(failure([&] { v.get<std::string>("a.b"); }), bad + ": Value not found at a.b");
    EXPECT_EQ(failure([&] { c.at("s.b"); }), bad + ": Value not found at s.b");
    EXPECT_EQ(failure([&] { v.get<std::string>("n"); }),
              bad + ": invalid type error converting from number to string");
    EXPECT_EQ(failure([&] { v.get<std::string>("null"); }),
              bad + ": invalid type error converting from null to string");
    EXPECT_EQ(failure([&] { json::value().str(); }),
              bad + ": invalid type error converting from undefined to string");
    EXPECT_EQ(failure([&] { v.get<int>("t"); }),
              bad + ": invalid type error converting from boolean to number");
    EXPECT_EQ(failure([&] { v.get<int>("n"); }), bad);
    EXPECT_EQ(failure([&] { v.get<unsigned>("neg"); }), bad);
    EXPECT_EQ(failure([&] { v.get<long long>("big"); }), bad);
    EXPECT_EQ(failure([&] { v.at("q"); }), bad + ": Member q not found");
    EXPECT_EQ(failure([&] { c["q"]; }), bad + ": Member q not found");
    EXPECT_EQ(failure([&] { v.at("s.b"); }), bad + ":  error converting from object to string");
    EXPECT_EQ(failure([&] { c["o"][std::size_t{0}]; }), bad + ":  error converting from array to object");
    EXPECT_EQ(failure([&] { c["arr"][7]; }), bad + ": Index out of range");
    EXPECT_EQ(failure([&] { v.at(""); }), bad + ": Invalid path provided");
    EXPECT_EQ(failure([&] { v.at("s..b", 1); }), bad + ": Invalid path provided");
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
    EXPECT_TRUE(v.find("").is_undefined());
    EXPECT_TRUE(v.find("a.").is_undefined());
    EXPECT_EQ(v.type("a"), json::is_object);
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
    json::value other = v;
    EXPECT_EQ(other, v);
    other["a"][0] = 2;
    EXPECT_NE(other, v);
    std::ostringstream type;
    type << v.type("a");
    EXPECT_EQ(type.str(), "array");
}

}  // namespace

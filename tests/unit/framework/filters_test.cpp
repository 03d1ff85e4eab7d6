#include <cppcms/filters.h>
#include <cppcms/util.h>

#include <gtest/gtest.h>

#include <ctime>

namespace filters = cppcms::filters;

namespace {

template <typename Filter>
std::string written(Filter const &filter, std::locale const &locale = std::locale::classic()) {
    std::ostringstream out;
    out.imbue(locale);
    out << filter;
    return out.str();
}

TEST(Filters, ChangeTheTextOfAnyObject) {
    std::string const text = "<a href=\"x\">'&/ \n</script>\xC3\xA9\x01";
    EXPECT_EQ(written(filters::escape(text)),
              "&lt;a href=&quot;x&quot;&gt;&#39;&amp;/ \n&lt;/script&gt;\xC3\xA9\x01");
    EXPECT_EQ(written(filters::raw(text)), text);
    EXPECT_EQ(written(filters::jsescape(text)), "<a href=\\\"x\\\">\\u0027&/ \\n</script>\xC3\xA9\\u0001");
    EXPECT_EQ(written(filters::urlencode("aZ9-_.~ /<\xC3\xA9")), "aZ9-_.~%20%2f%3c%c3%a9");
    EXPECT_EQ(written(filters::jsescape("a'b\"c</x>\n\\")), "a\\u0027b\\\"c</x>\\n\\\\");
    EXPECT_EQ(written(filters::escape(-1.5)), "-1.5");
    EXPECT_EQ(written(filters::escape(true)), "1");
    EXPECT_EQ(written(filters::urlencode(filters::escape("&"))), "%26amp%3b");
    char const array[] = "&";
    EXPECT_EQ(written(filters::escape(array)), "&amp;");
}

TEST(Filters, Base64HasTheLettersOfUrls) {
    struct {
        char const *text;
        char const *encoded;
    } const cases[] = {{"", ""}, {"f", "Zg"}, {"fo", "Zm8"}, {"foo", "Zm9v"}, {"\xFB\xFF\xBF", "-_-_"}};
    for (auto const &c : cases)
        EXPECT_EQ(written(filters::base64_urlencode(c.text)), c.encoded);
}

TEST(Filters, KeepTheFormatOfTheStream) {
    std::ostringstream out;
    out << std::hex << filters::escape(255) << ' ' << 255;
    EXPECT_EQ(out.str(), "ff ff");
}

TEST(Filters, LetterCaseAndTimesFollowTheLocale) {
    auto const locale = booster::locale::generator()("en_US.UTF-8");
    EXPECT_EQ(written(filters::to_upper("stra\xC3\x9F"
                                        "e"),
                      locale),
              "STRASSE");
    EXPECT_EQ(written(filters::to_lower("\xC3\x89"), locale), "\xC3\xA9");
    EXPECT_THROW(written(filters::to_upper("x")), std::bad_cast);

    std::time_t const noon = 1'000'000'000;  // 2001-09-09 01:46:40 UTC
    EXPECT_EQ(written(filters::strftime(noon, "%Y-%m-%d %H:%M", "GMT"), locale), "2001-09-09 01:46");
    EXPECT_EQ(written(filters::strftime(noon, "%H:%M", "GMT+2"), locale), "03:46");
    EXPECT_NE(written(filters::datetime(noon, "GMT"), locale), written(filters::date(noon, "GMT"), locale));
    std::ostringstream out;
    out.imbue(locale);
    out << filters::time(noon, "GMT") << ' ' << noon;
    EXPECT_TRUE(out.str().ends_with(" 1000000000")) << out.str();
}

TEST(Util, UrlDecoding) {
    struct {
        char const *encoded;
        char const *decoded;
    } const cases[] = {
        {"a+b", "a b"}, {"%41%c3%A9", "A\xC3\xA9"}, {"c%zz%4", "czz4"}, {"%", ""}, {"%%41", "A"}, {"%2", "2"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(cppcms::util::urldecode(c.encoded), c.decoded) << c.encoded;
    std::string every_byte(256, '\0');
    for (std::size_t i = 0; i < every_byte.size(); ++i)
        every_byte[i] = static_cast<char>(i);
    EXPECT_EQ(cppcms::util::urldecode(cppcms::util::urlencode(every_byte)), every_byte);
}

TEST(Util, EscapeTakesFiveCharacters) {
    EXPECT_EQ(cppcms::util::escape("&amp;<>\"'"), "&amp;amp;&lt;&gt;&quot;&#39;");
}

}  // namespace

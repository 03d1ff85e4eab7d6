#include <cppcms/filters.h>
#include <cppcms/util.h>
#include <gtest/gtest.h>

namespace filters = cppcms::filters;

namespace {

template <typename Filter>
std::string written(Filter const &filter) {
    std::ostringstream out;
    out << filter;
    return out.str();
}

TEST(Filters, ChangeTheTextOfAnyObject) {
    EXPECT_EQ(written(filters::urlencode("aZ9-_.~ /<\xC3\xA9")), "aZ9-_.~%20%2f%3c%c3%a9");
    EXPECT_EQ(written(filters::jsescape("a'b\"c</x>\n\\\x01")), "a\\u0027b\\\"c</x>\\n\\\\\\u0001");
    EXPECT_EQ(written(filters::escape(-1.5)), "-1.5");
    EXPECT_EQ(written(filters::urlencode(filters::escape("&"))), "%26amp%3b");
    char const array[] = "&";
    EXPECT_EQ(written(filters::escape(array)), "&amp;");
    std::ostringstream out;
    out << std::hex << filters::escape(255) << ' ' << 255;
    EXPECT_EQ(out.str(), "ff ff") << "the stream keeps its format";
}

TEST(Util, Encoding) {
    EXPECT_EQ(cppcms::util::escape("&amp;<>\"' /\xC3\xA9\x01"), "&amp;amp;&lt;&gt;&quot;&#39; /\xC3\xA9\x01");
    struct {
        char const *encoded;
        char const *decoded;
    } const cases[] = {
        {"a+b", "a b"}, {"%41%c3%A9", "A\xC3\xA9"}, {"c%zz%4", "czz4"}, {"%", ""}, {"%%41", "A"}, {"%2", "2"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(cppcms::util::urldecode(c.encoded), c.decoded) << c.encoded;
}

}  // namespace

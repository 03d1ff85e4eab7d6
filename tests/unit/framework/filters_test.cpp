#include <cppcms/filters.h>
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
    EXPECT_EQ(written(filters::escape(-1.5)), "-1.5");
    EXPECT_EQ(written(filters::urlencode(filters::escape("&"))), "%26amp%3b");
    char const array[] = "&";
    EXPECT_EQ(written(filters::escape(array)), "&amp;");
    std::ostringstream out;
    out << std::hex << filters::escape(255) << ' ' << 255;
    EXPECT_EQ(out.str(), "ff ff") << "the stream keeps its format";
}

}  // namespace

#include <gtest/gtest.h>

#include <string>

#include "fastcgi_client.h"
#include "fronts/fastcgi_head.h"

namespace {

using cppcms::impl::check_fastcgi_head;
using State = cppcms::impl::fastcgi_head_state;

TEST(FastcgiHead, IsCheckedBeforeTheLibrarySeesIt) {
    using namespace fastcgi;
    std::string const begin = BeginRequest(true);
    std::string const end = Record(params, "");
    std::string const pair = Pair("A", "b");
    std::string const long_pair = Pair("A", std::string(300, 'x'));
    std::string many;
    for (int i = 0; i < 3000; ++i)
        many += Record(params, Pair("A", "b"));
    struct {
        char const *name;
        std::string bytes;
        State state;
    } const cases[] = {
        {"usual", begin + Record(params, pair + long_pair) + end + Record(standard_input, ""),
         State::complete},
        {"a pair over two records",
         begin + Record(params, long_pair.substr(0, 50)) + Record(params, long_pair.substr(50)) + end,
         State::complete},
        {"question first", Record(get_values, Pair("FCGI_MPXS_CONNS", ""), 0) + begin + end, State::complete},
        {"nothing", "", State::incomplete},
        {"no end", begin + Record(params, pair), State::incomplete},
        {"half a record", begin.substr(0, 11), State::incomplete},
        {"wrong version", '\2' + begin.substr(1), State::malformed},
        {"variables without a beginning", Record(params, pair), State::malformed},
        {"begun twice", begin + begin, State::malformed},
        {"body before the end", begin + Record(standard_input, "x"), State::malformed},
        {"length beyond the records", begin + Record(params, std::string("\xff\xff\xff\xff\x01x", 6)) + end,
         State::malformed},
        {"cut length", begin + Record(params, std::string("\xff", 1)) + end, State::malformed},
        {"length beyond a question", Record(get_values, "\x7f\x7f", 0), State::malformed},
        {"filter", BeginRequest(true, 3), State::unknown_role},
        {"large variables", begin + Record(params, std::string(16385, 'x')), State::too_large},
        {"many small records", (begin + many).substr(0, cppcms::impl::max_fastcgi_head), State::too_large},
    };
    for (auto const &c : cases)
        EXPECT_EQ(check_fastcgi_head(c.bytes), c.state) << c.name;
    std::string const head = begin + Record(params, pair) + end;
    for (std::size_t size = 0; size < head.size(); ++size)
        EXPECT_EQ(check_fastcgi_head(std::string_view(head).substr(0, size)), State::incomplete) << size;
}

}  // namespace

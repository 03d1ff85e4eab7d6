// What begins a FastCGI request: its first bytes never tell something else than all of them.
#include <cassert>
#include <string_view>

#include "fronts/fastcgi_head.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    using cppcms::impl::check_fastcgi_head;
    using state = cppcms::impl::fastcgi_head_state;
    std::string_view const bytes(reinterpret_cast<char const *>(data), size);
    state const whole = check_fastcgi_head(bytes);
    for (std::size_t part = 0; part < size; part += 1 + part / 16) {
        state const before = check_fastcgi_head(bytes.substr(0, part));
        assert(before == state::incomplete || before == whole);
    }
    assert(whole == check_fastcgi_head(bytes));
    return 0;
}

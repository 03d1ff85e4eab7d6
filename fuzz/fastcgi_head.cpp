// What begins a FastCGI request: who sends it in pieces gets the same answer, and the same variables.
#include <algorithm>
#include <cassert>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "fronts/fastcgi_head.h"
#include "http/environment.h"

namespace {

using cppcms::impl::fastcgi_head;

struct Outcome {
    fastcgi_head::state state = fastcgi_head::state::incomplete;
    std::map<std::string, std::string> variables = {};
    std::string replies = {};

    bool operator==(Outcome const &) const = default;
};

Outcome Take(std::string_view bytes, std::size_t piece_size) {
    fastcgi_head head;
    Outcome outcome;
    std::string left;
    while (outcome.state == fastcgi_head::state::incomplete && !bytes.empty()) {
        left += bytes.substr(0, piece_size);
        bytes.remove_prefix(std::min(bytes.size(), piece_size));
        std::string_view untaken(left);
        outcome.state = head.take(untaken);
        left.erase(0, left.size() - untaken.size());
        outcome.replies += head.take_replies();
    }
    cppcms::impl::environment variables;
    if (outcome.state == fastcgi_head::state::complete)
        head.copy_variables(variables);
    outcome.variables = variables.all();
    return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string_view const bytes(reinterpret_cast<char const *>(data), size);
    Outcome const whole = Take(bytes, size + 1);
    assert(Take(bytes, 1 + (size > 0 ? data[size - 1] : 0)) == whole);
    return 0;
}

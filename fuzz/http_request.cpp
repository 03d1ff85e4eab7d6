// A request to the built-in HTTP server: whoever sends it in pieces gets the same answer, and what the
// application sees of it are CGI variables.
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cassert>
#include <map>
#include <string>
#include <utility>

#include "fronts/http_connection.h"
#include "http/environment.h"

namespace {

using cppcms::impl::connection;
using Outcome = std::pair<connection::input, std::map<std::string, std::string>>;

/// What is made of \a bytes that come in two pieces.
Outcome Read(std::string_view bytes, std::size_t cut) {
    static cppcms::impl::connection_registry registry;
    static auto const front = std::make_shared<cppcms::impl::http_front const>();
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        std::abort();
    Outcome outcome{connection::input::incomplete, {}};
    {
        cppcms::impl::http_connection server(ends[0], registry, front);
        cppcms::impl::environment variables;
        for (auto const piece : {bytes.substr(0, cut), bytes.substr(cut)}) {
            if (outcome.first != connection::input::incomplete)
                break;
            assert(::send(ends[1], piece.data(), piece.size(), 0) == static_cast<ssize_t>(piece.size()));
            outcome.first = server.read_head(variables);
        }
        if (outcome.first == connection::input::complete)
            outcome.second = variables.all();
        ::shutdown(ends[1], SHUT_RDWR);
    }
    ::close(ends[1]);
    return outcome;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string_view const bytes(reinterpret_cast<char const *>(data), size);
    Outcome const whole = Read(bytes, size);
    Outcome const cut = Read(bytes, size == 0 ? 0 : data[size - 1] % size);
    // What is wrong may be noticed sooner or later.
    if (whole.first == connection::input::complete || cut.first == connection::input::complete)
        assert(whole == cut);
    for (auto const &[name, value] : whole.second) {
        assert(name.find_first_of("=\r\n-") == std::string::npos);
        assert(name == "PATH_INFO" || value.find_first_of("\r\n") == std::string::npos);
    }
    return 0;
}

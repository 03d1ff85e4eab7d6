#include "fastcgi_connection.h"

#include <booster/log.h>
#include <http/environment.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "fastcgi_head.h"

namespace cppcms::impl {

namespace {

/// A head that has begun to come has to be there within this time.
constexpr auto head_patience = std::chrono::seconds(2);
constexpr auto head_poll = std::chrono::milliseconds(2);

/// Sets the library up, once. It would also take over signals that are not its business.
bool set_up_library() {
    constexpr std::array signals{SIGPIPE, SIGTERM, SIGUSR1};
    std::array<struct sigaction, signals.size()> before{};
    for (std::size_t i = 0; i < signals.size(); ++i)
        sigaction(signals[i], nullptr, &before[i]);
    bool const done = FCGX_Init() == 0;
    for (std::size_t i = 0; i < signals.size(); ++i)
        sigaction(signals[i], &before[i], nullptr);
    return done;
}

char const *problem_of(fastcgi_head_state state) {
    switch (state) {
        case fastcgi_head_state::too_large:
            return "too many variables";
        case fastcgi_head_state::unknown_role:
            return "a role other than responder";
        case fastcgi_head_state::incomplete:
            return "the beginning of a request only";
        default:
            return "malformed records";
    }
}

}  // namespace

fastcgi_connection::fastcgi_connection(int descriptor, connection_registry &registry, int timeout)
    : connection(descriptor, registry) {
    set_timeouts(timeout);
    // No listening socket: with an open connection the library reads a request from that one, as from one
    // kept since an earlier request, and where it fails it cannot go on to accept another.
    [[maybe_unused]] static bool const ready = set_up_library();
    FCGX_InitRequest(&request_, -1, 0);
    request_.ipcFd = descriptor;
    request_.keepConnection = 1;
    request_.detached = 1;  // do not wait for the peer when closing
}

fastcgi_connection::~fastcgi_connection() {
    FCGX_Free(&request_, 0);
}

connection::head fastcgi_connection::read_head(environment &variables) {
    switch (wait_for_head()) {
        case head::complete:
            break;
        case head::incomplete:
            return head::incomplete;
        case head::closed:
            return head::closed;
    }
    if (FCGX_Accept_r(&request_) != 0) {
        if (request_.ipcFd < 0)
            disown();
        BOOSTER_WARNING("cppcms") << "FastCGI connection dropped: the library does not accept the request";
        return head::closed;
    }
    // The first variable is the role, which the library adds.
    for (char **variable = request_.envp; *variable; ++variable) {
        std::string_view const text(*variable);
        if (auto const equals = text.find('='); variable != request_.envp && equals != std::string_view::npos)
            variables.add(text.substr(0, equals), text.substr(equals + 1));
    }
    return head::complete;
}

connection::head fastcgi_connection::wait_for_head() {
    auto const deadline = std::chrono::steady_clock::now() + head_patience;
    for (;;) {
        std::array<char, max_fastcgi_head> bytes;
        ssize_t const got = ::recv(descriptor(), bytes.data(), bytes.size(), MSG_PEEK | MSG_DONTWAIT);
        if (got <= 0)
            return got < 0 && (errno == EAGAIN || errno == EINTR) ? head::incomplete : head::closed;
        auto const state = check_fastcgi_head({bytes.data(), static_cast<std::size_t>(got)});
        if (state == fastcgi_head_state::complete)
            return head::complete;
        if (state == fastcgi_head_state::incomplete && std::chrono::steady_clock::now() < deadline) {
            // Looking takes nothing from the socket, so it cannot tell when there is more.
            std::this_thread::sleep_for(head_poll);
            continue;
        }
        BOOSTER_WARNING("cppcms") << "FastCGI connection dropped: " << problem_of(state);
        if (state == fastcgi_head_state::unknown_role)
            answer_unknown_role({bytes.data(), static_cast<std::size_t>(got)});
        return head::closed;
    }
}

void fastcgi_connection::answer_unknown_role(std::string_view begin_record) {
    constexpr char end_request = 3;
    constexpr char unknown_role = 3;
    std::array<char, 16> const answer{
        1, end_request, begin_record[2], begin_record[3], 0, 8, 0, 0, 0, 0, 0, 0, unknown_role, 0, 0, 0};
    ::send(descriptor(), answer.data(), answer.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
}

std::size_t fastcgi_connection::read(char *buffer, std::size_t size) {
    return static_cast<std::size_t>(std::max(0, FCGX_GetStr(buffer, static_cast<int>(size), request_.in)));
}

bool fastcgi_connection::write(std::string_view first, std::string_view second, chunk kind) {
    FCGX_PutStr(first.data(), static_cast<int>(first.size()), request_.out);
    FCGX_PutStr(second.data(), static_cast<int>(second.size()), request_.out);
    switch (kind) {
        case chunk::more:
            break;
        case chunk::flush:
            FCGX_FFlush(request_.out);
            break;
        case chunk::last:
            // The standard error of a request ends with its response: both ends leave with the last bytes.
            FCGX_FClose(request_.err);
            FCGX_FClose(request_.out);
            break;
    }
    return FCGX_GetError(request_.out) == 0;
}

bool fastcgi_connection::finish() {
    bool const keep = request_.keepConnection && !is_last_request() && FCGX_GetError(request_.out) == 0 &&
                      FCGX_GetChar(request_.in) == EOF && FCGX_GetError(request_.in) == 0;
    FCGX_Free(&request_, 0);
    if (!keep) {
        // The end of the body may be there unread; closing with it could cost the client its answer.
        std::array<char, 16384> waste;
        ::recv(descriptor(), waste.data(), waste.size(), MSG_DONTWAIT);
    }
    return keep;
}

}  // namespace cppcms::impl

#include "connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace cppcms::impl {

namespace {

/// How much of what a client sends is thrown away before others have their turn.
constexpr int pieces_at_once = 16;

}  // namespace

void connection_registry::add(connection *c) {
    std::lock_guard const lock(guard_);
    open_.insert(c);
}

void connection_registry::remove(connection *c) {
    std::lock_guard const lock(guard_);
    open_.erase(c);
    removed_.notify_all();
}

void connection_registry::shut_down_all() {
    std::lock_guard const lock(guard_);
    for (connection const *c : open_)
        ::shutdown(c->descriptor(), SHUT_RDWR);
}

void connection_registry::wait_until_empty(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(guard_);
    removed_.wait_until(lock, deadline, [this] { return open_.empty(); });
}

connection::connection(int descriptor, connection_registry &registry, int timeout)
    : descriptor_(descriptor), registry_(registry), timeout_(timeout) {
    registry_.add(this);
}

connection::~connection() {
    registry_.remove(this);
    ::close(descriptor_);
}

void connection::abandon_body() {
    body_abandoned_ = true;
    close_after_request();
}

bool connection::drain() {
    if (!std::exchange(output_ended_, true))
        ::shutdown(descriptor_, SHUT_WR);
    std::array<char, 16384> waste;
    ssize_t got = 1;
    for (int pieces = 0; got > 0 && pieces < pieces_at_once; ++pieces)
        got = receive(waste.data(), waste.size());
    return got > 0 || (got < 0 && errno == EAGAIN);
}

connection::input connection::receive(boost::beast::flat_buffer &buffer, std::size_t size) {
    ssize_t const got = receive(buffer.prepare(size).data(), size);
    if (got <= 0)
        return got < 0 && errno == EAGAIN ? input::incomplete : input::closed;
    buffer.commit(static_cast<std::size_t>(got));
    return input::complete;
}

ssize_t connection::receive(void *buffer, std::size_t size) {
    ssize_t got = 0;
    do
        got = ::recv(descriptor_, buffer, size, MSG_DONTWAIT);
    while (got < 0 && errno == EINTR);
    return got;
}

bool connection::send(std::initializer_list<std::string_view> texts) {
    std::array<iovec, 4> parts{};
    std::size_t left = 0;
    for (auto part = parts.begin(); std::string_view const text : texts) {
        *part++ = {const_cast<char *>(text.data()), text.size()};
        left += text.size();
    }
    msghdr message{};
    message.msg_iov = parts.data();
    message.msg_iovlen = texts.size();
    while (left > 0) {
        ssize_t const sent = ::sendmsg(descriptor_, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && (errno == EINTR || (errno == EAGAIN && wait_for_room())))
            continue;
        if (sent <= 0)
            return false;
        auto gone = static_cast<std::size_t>(sent);
        left -= gone;
        for (iovec &part : parts) {
            std::size_t const of_this = std::min(gone, part.iov_len);
            part = {static_cast<char *>(part.iov_base) + of_this, part.iov_len - of_this};
            gone -= of_this;
        }
    }
    return true;
}

bool connection::wait_for_room() {
    pollfd waiting{descriptor_, POLLOUT, 0};
    int const limit = timeout_ > 0 ? timeout_ * 1000 : -1;
    int ready = 0;
    do
        ready = ::poll(&waiting, 1, limit);
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

}  // namespace cppcms::impl

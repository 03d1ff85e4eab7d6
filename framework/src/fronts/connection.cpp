#include "connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <chrono>

namespace cppcms::impl {

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

connection::connection(int descriptor, connection_registry &registry)
    : descriptor_(descriptor), registry_(registry) {
    registry_.add(this);
}

connection::~connection() {
    registry_.remove(this);
    if (body_abandoned_)
        linger();
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

void connection::abandon_body() {
    body_abandoned_ = true;
    close_after_request();
}

void connection::set_timeouts(int seconds) {
    timeval const limit{seconds, 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    ::setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
}

void connection::linger() {
    // Closing with unread input would reset the connection, and the client would lose the answer that it
    // has not read yet. So what it still sends is read for a while.
    constexpr auto patience = std::chrono::seconds(2);
    auto const deadline = std::chrono::steady_clock::now() + patience;
    std::array<char, 16384> waste;
    ::shutdown(descriptor_, SHUT_WR);
    for (;;) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd waiting{descriptor_, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(left.count())) <= 0 ||
            ::recv(descriptor_, waste.data(), waste.size(), MSG_DONTWAIT) <= 0)
            return;
    }
}

}  // namespace cppcms::impl

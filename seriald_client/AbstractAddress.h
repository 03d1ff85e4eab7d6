#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <string_view>

/// The abstract Unix address of a name, which begins with the NUL that makes it abstract and has at most as
/// many bytes as a path may have.
struct AbstractAddress {
    AbstractAddress() = default;
    explicit AbstractAddress(std::string_view name)
        : length(offsetof(sockaddr_un, sun_path) + name.copy(address.sun_path, sizeof address.sun_path)) {
        address.sun_family = AF_UNIX;
    }

    sockaddr *get() { return reinterpret_cast<sockaddr *>(&address); }

    sockaddr_un address{};
    socklen_t length = 0;
};

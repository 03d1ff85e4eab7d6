#include "listener.h"

#include <booster/system_error.h>
#include <cppcms/cppcms_error.h>
#include <fcntl.h>
#include <http/configured_headers.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace cppcms::impl {

namespace {

constexpr char inherited[] = "stdin";

[[noreturn]] void fail(int error) {
    throw booster::system::system_error(std::error_code(error, std::system_category()));
}

void check(int result) {
    if (result < 0)
        fail(errno);
}

bool speaks_http(json::value const &settings) {
    std::string const api = settings.get<std::string>("api");
    if (api != "fastcgi" && api != "http")
        throw cppcms_error("Unknown api: " + api);
    return api == "http";
}

std::shared_ptr<http_front const> make_http_front(json::value const &settings, std::string const &ip,
                                                  int port) {
    auto front = std::make_shared<http_front>();
    front->server_name = ip;
    front->port = port;
    front->timeout = settings.get("http.timeout", front->timeout);
    front->script_names = settings.get("http.script_names", front->script_names);
    if (std::string const script = settings.get("http.script", ""); !script.empty())
        front->script_names.push_back(script);
    for (auto const &[name, value] : configured_headers(settings)) {
        if (!value.empty())
            front->headers.append(name).append(": ").append(value).append("\r\n");
        if (equal_ignoring_case(name, "Server"))
            front->names_itself = false;
    }
    return front;
}

void set_non_blocking(int socket) {
    // Several threads, and with an inherited socket several processes, may wake up for one client.
    check(::fcntl(socket, F_SETFL, ::fcntl(socket, F_GETFL) | O_NONBLOCK));
}

int inherited_socket() {
    int listening = 0;
    socklen_t size = sizeof(listening);
    check(::getsockopt(STDIN_FILENO, SOL_SOCKET, SO_ACCEPTCONN, &listening, &size));
    if (!listening)
        fail(EINVAL);
    set_non_blocking(STDIN_FILENO);
    return STDIN_FILENO;
}

descriptor unix_socket(std::string const &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path))
        fail(ENAMETOOLONG);
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    descriptor result(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    check(result.get());
    ::unlink(path.c_str());
    check(::bind(result.get(), reinterpret_cast<sockaddr const *>(&address), sizeof(address)));
    return result;
}

descriptor tcp_socket(std::string const &ip, int port) {
    addrinfo hints{};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    if (port < 0 || port > 65535 ||
        ::getaddrinfo(ip.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
        fail(EINVAL);
    std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> const address(found, &::freeaddrinfo);
    descriptor result(::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    check(result.get());
    int const on = 1;
    check(::setsockopt(result.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on)));
    // Accepted sockets inherit it: the end of a response must not wait for an acknowledgement.
    check(::setsockopt(result.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)));
    check(::bind(result.get(), found->ai_addr, found->ai_addrlen));
    return result;
}

void set_buffer_size(int socket, int option, int bytes) {
    if (bytes > 0)
        check(::setsockopt(socket, SOL_SOCKET, option, &bytes, sizeof(bytes)));
}

/// \a settings are of this listener, \a all those of the service.
listener open_listener(json::value const &settings, json::value const &all, int threads) {
    listener result;
    bool const http = speaks_http(settings);
    std::string const path = settings.get("socket", "");
    if (!path.empty()) {
        if (!settings.find("ip").is_undefined() || !settings.find("port").is_undefined())
            throw cppcms_error("Can't define both UNIX socket and TCP port/ip");
        if (http)
            throw cppcms_error("HTTP API is not supported over Unix Domain sockets");
    }
    if (path == inherited) {
        result.socket = inherited_socket();
        return result;
    }
    if (path.empty()) {
        std::string const ip = settings.get("ip", "127.0.0.1");
        int const port = settings.get("port", 8080);
        result.owned = tcp_socket(ip, port);
        if (http)
            result.http = make_http_front(all, ip, port);
    } else {
        result.owned = unix_socket(path);
    }
    result.socket = result.owned.get();
    set_buffer_size(result.socket, SO_SNDBUF, settings.get("sndbuf", -1));
    set_buffer_size(result.socket, SO_RCVBUF, settings.get("rcvbuf", -1));
    set_non_blocking(result.socket);
    check(::listen(result.socket, settings.get("backlog", 2 * threads)));
    return result;
}

}  // namespace

std::vector<listener> open_listeners(json::value const &settings, int threads) {
    json::value const &service = settings.find("service");
    bool const single = !service.find("api").is_undefined();
    bool const several = !service.find("list").is_undefined();
    if (single && several)
        throw cppcms_error("Can't specify both service.api and service.list");
    std::vector<listener> result;
    if (single)
        result.push_back(open_listener(service, settings, threads));
    if (several)
        for (json::value const &one : service.find("list").array())
            result.push_back(open_listener(one, settings, threads));
    return result;
}

}  // namespace cppcms::impl

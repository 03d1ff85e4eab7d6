#include "ctl/LocalSocket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "ctl/Status.h"

namespace ctl {

namespace {

// FastCGI: a request is a sequence of records of these types.
enum RecordType : unsigned char { BeginRequest = 1, EndRequest = 3, Parameters = 4, Input = 5, Output = 6 };
constexpr std::size_t headSize = 8;
constexpr std::size_t maxContent = 65528;
constexpr std::string_view responder("\0\1\0\0\0\0\0\0", 8);  // and the connection ends with the request
constexpr std::size_t maxAnswer = 16 << 20;                   // bytes

std::string Record(RecordType type, std::string_view content) {
    std::string record{1, static_cast<char>(type), 0, 1};
    record += static_cast<char>(content.size() >> 8U);
    record += static_cast<char>(content.size() & 0xFFU);
    record.append(2, '\0');
    return record.append(content);
}

/// A stream of records, which an empty one ends.
std::string Stream(RecordType type, std::string_view content) {
    std::string records;
    for (; !content.empty(); content.remove_prefix(std::min(content.size(), maxContent)))
        records += Record(type, content.substr(0, maxContent));
    return records + Record(type, {});
}

std::string Pair(std::string_view name, std::string_view value) {
    std::string pair;
    for (std::size_t const size : {name.size(), value.size()}) {
        if (size >= 0x80) {
            pair += static_cast<char>(size >> 24U | 0x80U);
            pair += static_cast<char>(size >> 16U);
            pair += static_cast<char>(size >> 8U);
        }
        pair += static_cast<char>(size);
    }
    return pair.append(name).append(value);
}

std::string RequestOf(std::string const &path, std::string const &user, std::string const &call) {
    std::string const parameters =
        Pair("REQUEST_METHOD", "POST") + Pair("SERVER_PROTOCOL", "HTTP/1.1") + Pair("SCRIPT_NAME", "") +
        Pair("PATH_INFO", path) + Pair("REQUEST_URI", path) + Pair("REMOTE_USER", user) +
        Pair("CONTENT_TYPE", "application/json") + Pair("CONTENT_LENGTH", std::to_string(call.size()));
    return Record(BeginRequest, responder) + Stream(Parameters, parameters) + Stream(Input, call);
}

[[noreturn]] void Fail(std::string const &what) {
    bool const denied = errno == EACCES || errno == EPERM;
    throw Problem(denied ? NotAuthorised : Unreachable, what + ": " + std::strerror(errno));
}

/// The service's socket, connected.
class Connection {
  public:
    Connection(std::string const &path, long seconds)
        : _socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        if (path.size() >= sizeof address.sun_path)
            throw Problem(Usage, "Too long: " + path);
        path.copy(address.sun_path, path.size());
        timeval const limit{.tv_sec = seconds, .tv_usec = 0};
        for (int const option : {SO_RCVTIMEO, SO_SNDTIMEO})
            ::setsockopt(_socket, SOL_SOCKET, option, &limit, sizeof limit);
        if (::connect(_socket, reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0) {
            int const reason = errno;
            ::close(_socket);
            errno = reason;
            Fail(path);
        }
    }
    ~Connection() { ::close(_socket); }
    Connection(Connection const &) = delete;
    Connection &operator=(Connection const &) = delete;

    void Send(std::string_view data) const {
        while (!data.empty()) {
            ssize_t const sent = ::send(_socket, data.data(), data.size(), MSG_NOSIGNAL);
            if (sent < 0)
                Fail("The service takes no request");
            data.remove_prefix(static_cast<std::size_t>(sent));
        }
    }
    std::string Receive(std::size_t size) const {
        std::string data(size, '\0');
        for (std::size_t at = 0; at < size;) {
            ssize_t const got = ::recv(_socket, &data[at], size - at, 0);
            if (got < 0)
                Fail("The service gives no answer");
            if (got == 0)
                throw Problem(Unreachable, "The service has ended the connection");
            at += static_cast<std::size_t>(got);
        }
        return data;
    }

  private:
    int _socket;
};

std::string OutputOf(Connection const &connection) {
    std::string output;
    for (;;) {
        std::string const head = connection.Receive(headSize);
        auto const byte = [&head](std::size_t at) { return static_cast<unsigned char>(head[at]); };
        std::string const content = connection.Receive(byte(4) * 256U + byte(5));
        connection.Receive(byte(6));  // padding
        if (byte(1) == EndRequest)
            return output;
        if (byte(1) == Output)
            output += content;
        if (output.size() > maxAnswer)
            throw Problem(Unreachable, "The answer is too long");
    }
}

}  // namespace

Answer PostLocally(LocalService const &service, std::string const &user, std::string const &call) {
    Connection const connection(service.socket, service.seconds);
    connection.Send(RequestOf(service.path, user, call));
    std::string const output = OutputOf(connection);
    constexpr std::string_view status = "Status: ";
    constexpr std::string_view headEnd = "\r\n\r\n";
    std::size_t const end = output.find(headEnd);
    if (end == std::string::npos)
        throw Problem(Unreachable, "The answer has no head");
    std::size_t const at = output.find(status);
    long const code = at < end ? std::strtol(output.c_str() + at + status.size(), nullptr, 10) : 200;
    return {code, output.substr(end + headEnd.size())};
}

}  // namespace ctl

#include "seriald_client/SerialdClient.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "seriald_client/AbstractAddress.h"
#include "seriald_client/PortStatistics.h"
#include "tests/unit/platform/Wire.h"

namespace {

/// Calls of bind() that are yet to fail.
std::atomic<int> failingBinds{0};

}  // namespace

/// Stands in for the C library's.
extern "C" int bind(int socket, sockaddr const *address, socklen_t length) noexcept {
    if (failingBinds > 0) {
        --failingBinds;
        errno = EADDRINUSE;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_bind, socket, address, length));
}

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t clientId = 11;

/// A socket at the serial daemon's address.
class Server {
  public:
    Server() : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        AbstractAddress own(std::string_view("\0/orvane/seriald/server", 23));
        if (::bind(socket_, own.get(), own.length) != 0)
            throw std::runtime_error("the serial daemon's address is taken");
    }
    ~Server() { ::close(socket_); }
    Server(Server const &) = delete;
    Server &operator=(Server const &) = delete;

    /// The next datagram; "nothing" where none comes within a second.
    std::string Receive() {
        pollfd wait{.fd = socket_, .events = POLLIN, .revents = 0};
        if (::poll(&wait, 1, 1000) <= 0)
            return "nothing";
        std::string data(5000, '\0');
        client_.length = sizeof client_.address;
        data.resize(::recvfrom(socket_, data.data(), data.size(), 0, client_.get(), &client_.length));
        return data;
    }

    /// To the sender of the last datagram.
    void Reply(std::string const &data) {
        ::sendto(socket_, data.data(), data.size(), 0, client_.get(), client_.length);
    }

    /// The address of that sender.
    std::string ClientName() const {
        return {client_.address.sun_path, client_.length - offsetof(sockaddr_un, sun_path)};
    }

  private:
    int socket_;
    AbstractAddress client_;
};

Wire Control(std::uint32_t id, std::uint32_t command) {
    return Wire(16, {{0, {2, id, command}}});
}

TEST(SerialdClient, DatagramsAreAsTheDaemonReadsThem) {
    Server server;
    cSerialdClient client(clientId);
    std::pair<std::function<bool()>, Wire> const cases[] = {
        {[&] { return client.RequestStats(); }, Control(99, 2)},
        {[&] { return client.RequestPortMap(); }, Control(99, 3)},
        {[&] { return client.GpsRequestToSend(); }, Control(clientId, 4)},
        {[&] { return client.GpsSendComplete(); }, Control(clientId, 6)},
        {[&] { return client.PortSettings(9600, 1, 2, 3); }, Wire(24, {{0, {1, clientId, 9600, 1, 2, 3}}})},
        {[&] { return client.NextMode(); }, Wire(24, {{0, {1, clientId, 19200, 1, 2, 3}}})},
    };
    for (auto const &[send, datagram] : cases) {
        EXPECT_TRUE(send());
        EXPECT_EQ(server.Receive(), datagram.bytes());
    }
    EXPECT_TRUE(client.Write("data", 4));
    EXPECT_EQ(server.Receive().substr(16), Wire(8, {{0, {4}}}, {{4, "data"}}).bytes());
    std::string const prefix =
        std::string("\0/orvane/seriald/client/", 24) + std::to_string(::getpid()) + '/';
    EXPECT_EQ(server.ClientName().substr(0, prefix.size()), prefix);
}

TEST(SerialdClient, ConnectedFollowsWhatIsHeard) {
    auto server = std::make_unique<Server>();
    cSerialdClient client(clientId);
    char buffer[10];
    EXPECT_TRUE(client.RequestStats());
    EXPECT_FALSE(client.IsConnected());
    server->Receive();
    server->Reply("hello");
    EXPECT_EQ(client.WaitRead(buffer, sizeof buffer), 5);
    EXPECT_EQ(std::string(buffer, 5), "hello");
    EXPECT_TRUE(client.IsConnected());

    auto const start = Clock::now();
    EXPECT_EQ(client.WaitRead(buffer, sizeof buffer), 0);
    EXPECT_GE(Clock::now() - start, 490ms);
    EXPECT_LT(Clock::now() - start, 900ms);
    EXPECT_TRUE(client.IsConnected());
    EXPECT_LT(client.Read(buffer, sizeof buffer), 0);
    EXPECT_FALSE(client.IsConnected());

    server.reset();
    EXPECT_FALSE(client.RequestStats());
    EXPECT_FALSE(client.IsConnected());
}

TEST(SerialdClient, ADaemonThatStoppedReadingHoldsNobody) {
    Server const server;
    cSerialdClient client(clientId);
    int sent = 0;
    while (sent < 100000 && client.RequestStats())
        ++sent;
    EXPECT_LT(sent, 100000);
}

TEST(SerialdClient, ConnectingIsTriedThreeTimes) {
    std::string const line = "cSerialdClient: bind: Address already in use\n";
    Server server;
    std::tuple<int, bool, std::string> const cases[] = {
        {0, true, ""}, {1, true, line}, {2, true, line + line}, {3, false, line + line + line}};
    for (auto const &[failures, sent, told] : cases) {
        cSerialdClient client(clientId);
        failingBinds = failures;
        auto const start = Clock::now();
        testing::internal::CaptureStderr();
        EXPECT_EQ(client.RequestStats(), sent);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), told);
        EXPECT_GE(Clock::now() - start, failures * 100ms);
        EXPECT_EQ(failingBinds, 0);
        EXPECT_EQ(server.Receive(), sent ? Control(99, 2).bytes() : "nothing");
    }
}

TEST(SerialdClient, OnlyAWholeReplyInTimeIsStatistics) {
    Server server;
    std::string const reply = Wire(2492, {{0, {2, 99, 4}}, {2488, {1}}}).bytes();
    struct {
        char const *name;
        std::chrono::milliseconds delay;
        std::string reply;
        bool counts;
    } const cases[] = {
        {"at once", 0ms, reply, true},      {"in time", 300ms, reply, true},
        {"late", 700ms, reply, false},      {"short", 0ms, reply.substr(1), false},
        {"long", 0ms, reply + '\0', false}, {"after another's late one", 0ms, reply, true},
    };
    for (auto const &expected : cases) {
        std::jthread const daemon([&] {
            EXPECT_EQ(server.Receive(), Control(99, 2).bytes());
            std::this_thread::sleep_for(expected.delay);
            server.Reply(expected.reply);
        });
        auto const statistics = SerialdMsg::QueryStatistics();
        EXPECT_EQ(statistics.has_value(), expected.counts) << expected.name;
        EXPECT_EQ(statistics && statistics->FindPort(4), expected.counts) << expected.name;
    }
    auto const start = Clock::now();
    EXPECT_FALSE(SerialdMsg::QueryStatistics());
    EXPECT_GE(Clock::now() - start, 490ms);
    EXPECT_LT(Clock::now() - start, 900ms);
}

}  // namespace

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "WebApps/webconfig/util/Commands.h"
#include "WebApps/webconfig/util/ProvisioningClient.h"

namespace {

using namespace webconfig::util;
using namespace std::chrono_literals;

constexpr ProvisioningLimits impatient{.connect = 1, .transfer = 1};
constexpr char noCommunication[] = "Failed to communicate with server.";

/// A server on the loopback interface. It takes one connection after the other and hands each, with its
/// number and after the request has come, to a function.
class Server {
  public:
    using Answer = std::function<void(int client, std::size_t number)>;

    explicit Server(Answer answer) : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        ::setenv("no_proxy", "*", 1);
        address_.sin_family = AF_INET;
        address_.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address_);
        EXPECT_EQ(::bind(listener_, Address(), size), 0);
        EXPECT_EQ(::listen(listener_, 0), 0);
        ::getsockname(listener_, Address(), &size);
        if (answer)
            thread_ = std::thread([this, answer = std::move(answer)] { Serve(answer); });
    }
    ~Server() {
        ::shutdown(listener_, SHUT_RDWR);
        if (thread_.joinable())
            thread_.join();
        ::close(listener_);
    }
    Server(Server const &) = delete;
    Server &operator=(Server const &) = delete;

    sockaddr *Address() { return reinterpret_cast<sockaddr *>(&address_); }
    std::string Name() const { return "127.0.0.1:" + std::to_string(::ntohs(address_.sin_port)); }
    std::size_t Requests() const { return requests_; }

  private:
    void Serve(Answer const &answer) {
        for (;;) {
            int const client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (client < 0)
                return;
            std::string request;
            char byte = 0;
            auto const complete = [&] {  // with its body of JSON, but for what was redirected
                return request.ends_with(request.starts_with("GET") ? "\r\n\r\n" : "}");
            };
            while (!complete() && ::recv(client, &byte, 1, 0) == 1)
                request += byte;
            answer(client, ++requests_);
            ::close(client);
        }
    }

    int listener_;
    sockaddr_in address_{};
    std::atomic<std::size_t> requests_ = 0;
    std::thread thread_;
};

void Say(int client, std::string const &text) {
    ::send(client, text.data(), text.size(), MSG_NOSIGNAL);
}

void SayJson(int client, std::string const &json) {
    Say(client, "HTTP/1.0 200 OK\r\n\r\n" + json);
}

/// Until the client goes, or \a pause is over: true for the latter.
bool Waits(int client, std::chrono::milliseconds pause) {
    pollfd gone{client, POLLIN, 0};
    return ::poll(&gone, 1, static_cast<int>(pause.count())) == 0;
}

TEST(Provisioning, AServerThatTakesItsTimeIsGivenUp) {
    struct {
        char const *name;
        Server::Answer answer;
    } const cases[] = {
        {"says nothing", [](int client, std::size_t) { Waits(client, 10s); }},
        {"a byte now and then",
         [](int client, std::size_t) {
             SayJson(client, "{");
             for (int i = 0; i < 100 && Waits(client, 100ms); ++i)
                 Say(client, " ");
         }},
        {"accepts nobody", {}},
    };
    for (auto const &c : cases) {
        Server server(c.answer);
        std::vector<int> others;
        for (int i = 0; i < 4 && !c.answer; ++i) {  // as many as its queue has room for, and more
            others.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
            ::connect(others.back(), server.Address(), sizeof(sockaddr_in));
        }
        ProvisioningClient client(server.Name(), "code", impatient);
        auto const start = std::chrono::steady_clock::now();
        EXPECT_FALSE(client.Register("box")) << c.name;
        auto const took = std::chrono::steady_clock::now() - start;
        EXPECT_GT(took, 900ms) << c.name;
        EXPECT_LT(took, 5s) << c.name;
        EXPECT_EQ(client.Error(), noCommunication) << c.name;
        for (int const other : others)
            ::close(other);
    }
}

TEST(Provisioning, AServiceThatStopsDoesNotWaitForTheServer) {
    Server server([](int client, std::size_t) { Waits(client, 10s); });
    EndCommandsWithin(0s);
    auto const start = std::chrono::steady_clock::now();
    EXPECT_FALSE(ProvisioningClient(server.Name(), "code").Register("box"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    AllowCommands();
}

TEST(Provisioning, RedirectionsStayWithHttp) {
    constexpr char good[] = R"({"client_full_name":"a/b","organisation_name":"x","vpn_config":"text"})";
    struct {
        std::string scheme;
        bool followed;
    } const cases[] = {{"http://", true},  {"ftp://", false},  {"gopher://", false},
                       {"dict://", false}, {"file://", false}, {"telnet://", false}};
    for (auto const &c : cases) {
        std::string target;
        Server server([&](int client, std::size_t number) {
            if (number == 1)
                Say(client, "HTTP/1.0 302 Found\r\nLocation: " + target + "\r\n\r\n");
            else
                SayJson(client, good);
        });
        // A file would be read as the answer.
        std::string const file = "/tmp/provisioning_test.json";
        std::ofstream(file) << good;
        target = c.scheme + (c.scheme == "file://" ? file : server.Name() + "/moved");
        ProvisioningClient client(server.Name(), "code", impatient);
        auto const configuration = client.Register("box");
        EXPECT_EQ(configuration.has_value(), c.followed) << target;
        EXPECT_EQ(client.Error(), c.followed ? "" : noCommunication) << target;
        EXPECT_EQ(server.Requests(), c.followed ? 2U : 1U) << target;
        if (configuration) {
            EXPECT_EQ(configuration->fileName + ": " + configuration->text, "ab(x): text");
        }
        ::unlink(file.c_str());
    }
}

}  // namespace

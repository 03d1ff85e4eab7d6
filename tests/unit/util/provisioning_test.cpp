#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
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

/// A server on the loopback interface that says nothing but the answers it is given, each to one connection.
class Server {
  public:
    Server() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        ::setenv("no_proxy", "*", 1);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        EXPECT_EQ(::bind(listener_, reinterpret_cast<sockaddr *>(&address), size), 0);
        EXPECT_EQ(::listen(listener_, 8), 0);
        ::getsockname(listener_, reinterpret_cast<sockaddr *>(&address), &size);
        name = "127.0.0.1:" + std::to_string(::ntohs(address.sin_port));
    }
    ~Server() {
        ::shutdown(listener_, SHUT_RDWR);
        if (thread_.joinable())
            thread_.join();
        ::close(listener_);
    }
    Server(Server const &) = delete;
    Server &operator=(Server const &) = delete;

    void Answer(std::vector<std::string> const &answers) {
        thread_ = std::thread([this, answers] {
            for (auto const &answer : answers) {
                int const client = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
                char request[4096];
                if (client < 0 || ::recv(client, request, sizeof request, 0) <= 0)
                    return;
                ++requests;
                ::send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
                ::shutdown(client, SHUT_WR);
                while (::recv(client, request, sizeof request, 0) > 0) {
                }
                ::close(client);
            }
        });
    }

    std::string name;
    std::atomic<int> requests = 0;

  private:
    int listener_;
    std::thread thread_;
};

TEST(Provisioning, ASilentServerIsGivenUpInTimeOrWhenTheServiceStops) {
    for (bool const stops : {false, true}) {
        Server const server;
        if (stops)
            EndCommandsWithin(0s);
        ProvisioningClient client(server.name, "code", stops ? ProvisioningLimits() : impatient);
        auto const start = std::chrono::steady_clock::now();
        EXPECT_FALSE(client.Register("box"));
        EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
        EXPECT_EQ(client.Error(), noCommunication);
        AllowCommands();
    }
}

TEST(Provisioning, RedirectionsStayWithHttp) {
    constexpr char good[] = R"({"client_full_name":"a/b","organisation_name":"x","vpn_config":"text"})";
    std::string const file = "/tmp/provisioning_test.json";  // would be read as the answer
    std::ofstream(file) << good;
    for (std::string const scheme : {"http", "ftp", "gopher", "dict", "file", "telnet"}) {
        Server server;
        std::string const target = scheme + "://" + (scheme == "file" ? file : server.name + "/moved");
        server.Answer({"HTTP/1.0 302 Found\r\nLocation: " + target + "\r\n\r\n",
                       std::string("HTTP/1.0 200 OK\r\n\r\n") + good});
        ProvisioningClient client(server.name, "code", impatient);
        auto const configuration = client.Register("box");
        EXPECT_EQ(configuration ? configuration->fileName + ": " + configuration->text : client.Error(),
                  scheme == "http" ? "ab(x): text" : noCommunication)
            << target;
        EXPECT_EQ(server.requests, scheme == "http" ? 2 : 1) << target;
    }
    ::unlink(file.c_str());
}

}  // namespace

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <boost/asio/ip/tcp.hpp>
#include <boost/noncopyable.hpp>
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
class Server : boost::noncopyable {
    using Protocol = boost::asio::ip::tcp;

  public:
    Server() : listener_(context_, Protocol::endpoint(boost::asio::ip::address_v4::loopback(), 0)) {
        ::setenv("no_proxy", "*", 1);
        name = "127.0.0.1:" + std::to_string(listener_.local_endpoint().port());
    }
    ~Server() {
        ::shutdown(listener_.native_handle(), SHUT_RDWR);
        if (thread_.joinable())
            thread_.join();
    }

    void Answer(std::vector<std::string> const &answers) {
        thread_ = std::thread([this, answers] {
            boost::system::error_code ended;
            for (auto const &answer : answers) {
                Protocol::iostream client;
                if (listener_.accept(client.socket(), ended))
                    return;
                ++requests;
                for (std::string line; std::getline(client, line) && line != "\r";) {
                }
                client << answer << std::flush;
            }
        });
    }

    std::string name;
    std::atomic<int> requests = 0;

  private:
    boost::asio::io_context context_;
    Protocol::acceptor listener_;
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

#include <gtest/gtest.h>
#include <vexa/vexa.h>

#include <cerrno>
#include <vector>

#include "device/daemons/RawMessage.h"

namespace {

using daemons::RawMessage;

using Types = std::vector<std::uint32_t>;

/// Remembers what arrives.
struct Recorder : cVexa_Handler {
    bool HandleMessage(cVexaMsg *message, char const *sender, cVexa &) override {
        types.push_back(message->Type());
        senders.emplace_back(sender);
        return true;
    }

    Types types;
    std::vector<std::string> senders;
};

cVexaMsgRequestServerStats const request;

TEST(Vexa, ALateAnswerReachesNobody) {
    Recorder requests;
    Recorder answers;
    cVexa daemon("statusd", &requests);
    ASSERT_EQ(daemon.Listen(), 0);
    cVexa client("webman", &answers);
    client.Send("statusd", &request);
    daemon.Process();
    client.Close();
    EXPECT_EQ(client.GetFd(), -1);
    client.Send("statusd", &request);  // on an endpoint of its own
    EXPECT_LT(daemon.Send(requests.senders.at(0).c_str(), &request), 0);
    client.Process();
    EXPECT_TRUE(answers.types.empty());
}

TEST(Vexa, SendingFailsWithoutWaiting) {
    cVexa client("webman", nullptr);
    for (std::string const &destination : {std::string("nobody"), std::string(), std::string(5000, 'x')})
        EXPECT_LT(client.Send(destination.c_str(), &request), 0) << destination;
    EXPECT_GE(client.GetFd(), 0);

    cVexa stopped("statusd", nullptr);
    ASSERT_EQ(stopped.Listen(), 0);
    int sent = 0;
    while (sent < 100000 && client.Send("statusd", &request) > 0)
        ++sent;
    EXPECT_LT(sent, 100000);
    EXPECT_EQ(errno, EAGAIN);
}

TEST(Vexa, NoiseIsDroppedAndWhatFollowsIsNot) {
    Recorder requests;
    cVexa daemon("statusd", &requests);
    ASSERT_EQ(daemon.Listen(), 0);
    cVexa client("webman", nullptr);
    for (std::size_t const size : {1u, 3u, 5u, 100u, 511u}) {
        RawMessage const noise(std::string(size, '\x0e'));
        ASSERT_GT(client.Send("statusd", &noise), 0);
    }
    client.Send("statusd", &request);
    daemon.Process();
    EXPECT_EQ(requests.types, Types{14});
}

}  // namespace

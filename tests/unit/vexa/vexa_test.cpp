#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>
#include <vexa/vexa.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "device/daemons/RawMessage.h"

namespace {

using daemons::RawMessage;

/// Remembers what arrives; answers requests where it is told to.
struct Recorder : cVexa_Handler {
    explicit Recorder(cVexaMsg const *reply = nullptr) : answer(reply) {}

    bool HandleMessage(cVexaMsg *message, char const *sender, cVexa &client) override {
        types.push_back(message->Type());
        senders.emplace_back(sender);
        if (answer) {
            EXPECT_GT(client.Send(sender, answer), 0) << sender;
        }
        return true;
    }

    cVexaMsg const *answer;
    std::vector<std::uint32_t> types;
    std::vector<std::string> senders;
};

using Types = std::vector<std::uint32_t>;

cVexaMsgRequestServerStats const request;

bool Readable(cVexa const &client) {
    pollfd wait{.fd = client.GetFd(), .events = POLLIN, .revents = 0};
    return ::poll(&wait, 1, 0) > 0;
}

TEST(Vexa, AnAnswerReachesTheOneWhoAsked) {
    cVexaMsgServerStats const answer;
    Recorder requests(&answer);
    Recorder first;
    Recorder second;
    cVexa daemon("statusd", &requests);
    cVexa firstClient("webman", &first);
    cVexa secondClient("webman", &second);
    ASSERT_EQ(daemon.Listen(), 0);
    EXPECT_EQ(firstClient.GetFd(), -1);

    EXPECT_EQ(firstClient.Send("statusd", &request), 4);
    EXPECT_EQ(secondClient.Send("statusd", &request), 4);
    daemon.Process();
    EXPECT_EQ(requests.types, (Types{14, 14}));
    for (std::string const &sender : requests.senders)
        EXPECT_TRUE(sender.starts_with("webman/")) << sender;
    ASSERT_NE(requests.senders[0], requests.senders[1]);

    EXPECT_TRUE(Readable(firstClient));
    firstClient.Process();
    EXPECT_EQ(first.types, Types{15});
    EXPECT_EQ(first.senders, std::vector<std::string>{"statusd"});
    EXPECT_TRUE(second.types.empty());
    secondClient.Process();
    EXPECT_EQ(second.types, Types{15});
    EXPECT_FALSE(Readable(secondClient));
}

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

TEST(Vexa, ADaemonsNameIsItsOwnUntilItCloses) {
    auto first = std::make_unique<cVexa>("statusd", nullptr);
    cVexa second("statusd", nullptr);
    EXPECT_EQ(first->Listen(), 0);
    EXPECT_LT(second.Listen(), 0);
    first.reset();
    EXPECT_EQ(second.Listen(), 0);
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

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "WebApps/webconfig/util/DaemonQuery.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;
using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

/// The result of a query, and how long it took.
template <typename Query>
auto Timed(Query query) {
    auto const start = std::chrono::steady_clock::now();
    auto reply = query();
    return std::pair(std::move(reply), std::chrono::steady_clock::now() - start);
}

class DaemonQuery : public testing::Test {
  protected:
    LogCapture log{booster::log::error};
};

TEST_F(DaemonQuery, ARequestNobodyTakesIsLoggedAndStillWaits) {
    std::pair<bool (*)(), std::string> const cases[] = {
        {[] { return AskSeriald().answer != nullptr; }, "\"seriald\", cVexaMsgRequestGPRSStats"},
        {[] { return AskStatusd().answer != nullptr; }, "\"statusd\", cVexaMsgRequestServerStats"},
        {[] { return AskOpenvpnd().answer != nullptr; }, "\"openvpnd\", cVexaMsgRequestOpenVPNStats"},
    };
    for (auto const &[hasAnswer, request] : cases) {
        auto const [answered, time] = Timed(hasAnswer);
        EXPECT_FALSE(answered);
        EXPECT_GE(time, 990ms);
        EXPECT_LT(time, 1500ms);
        EXPECT_EQ(log.Take(), Lines{"error: vexaClient.Send(" + request + ") failed (DaemonQuery)"});
    }
}

/// Answers whoever asks it.
struct Answering : cVexa_Handler {
    bool HandleMessage(cVexaMsg *, char const *sender, cVexa &daemon) override {
        cVexaMsgServerStats const answer;
        return daemon.Send(sender, &answer) > 0;
    }
};

TEST_F(DaemonQuery, QueriesDoNotDisturbEachOther) {
    Answering handler;
    cVexa daemon("statusd", &handler);
    ASSERT_EQ(daemon.Listen(), 0);
    std::jthread const serving([&](std::stop_token const &end) {
        for (; !end.stop_requested(); std::this_thread::sleep_for(5ms))
            daemon.Process();
    });
    std::atomic<int> answers = 0;
    {
        std::vector<std::jthread> threads(8);  // a new network namespace lets 11 datagrams wait at a socket
        for (auto &thread : threads)
            thread = std::jthread([&] { answers += AskStatusd().answer ? 1 : 0; });
    }
    EXPECT_EQ(answers, 8);
}

}  // namespace

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <string_view>
#include <thread>
#include <vector>

#include "WebApps/webconfig/util/DaemonQuery.h"
#include "WebApps/webconfig/util/VexaHandler.h"
#include "tests/unit/platform/TemporaryFolder.h"
#include "tests/unit/util/LogCapture.h"
#include "tests/unit/vexa/DaemonProcess.h"

namespace {

using namespace webconfig::util;
using namespace std::chrono_literals;
using namespace std::string_view_literals;
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
    DaemonQuery() : log(booster::log::error) {}

    std::string Report(std::string const &text) { return folder.File("report", text); }
    DaemonProcess Statusd(std::string const &report) { return {STATUSD, Report(report), "\0vexa/statusd"sv}; }

    TemporaryFolder folder;
    LogCapture log;
};

TEST_F(DaemonQuery, EachDaemonAnswersWithItsReport) {
    {
        auto const daemon = Statusd("connected = 1\nserver_address = 10.99.0.1\n");
        auto const [canReceive, answer] = AskStatusd();
        EXPECT_TRUE(canReceive);
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->connected, 1);
        EXPECT_EQ(answer->serverAddress, 0x0a630001u);
    }
    {
        DaemonProcess const daemon(OPENVPND, Report("seconds_in_state=301\n status\t=  up = yes \r\n"),
                                   "\0vexa/openvpnd"sv);
        auto const answer = AskOpenvpnd().answer;
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->connected, 0);
        EXPECT_EQ(answer->secondsInState, 301u);
        EXPECT_STREQ(answer->status, "up = yes");
    }
    {
        DaemonProcess const daemon(
            SERIALD, Report("signal_quality = -75\nnetwork = " + std::string(70, 'n') + "\nsim_ccid = 8949"),
            "\0vexa/seriald"sv);
        auto const answer = AskSeriald().answer;
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->signalQuality, -75);
        EXPECT_EQ(answer->network, std::string(63, 'n'));
        EXPECT_STREQ(answer->simCcid, "8949");
    }
    EXPECT_EQ(log.Take(), Lines());
}

TEST_F(DaemonQuery, TheReportIsReadAgainForEachRequest) {
    auto const daemon = Statusd("connected = 1\n");
    EXPECT_EQ(AskStatusd().answer->connected, 1);
    Report("# connected = 1\nconnected = 300\nconnected\nflag = 1\nserver_address = 10.0.0.256\n");
    EXPECT_EQ(AskStatusd().answer->connected, 0);
    Report("connected = 2");
    EXPECT_EQ(AskStatusd().answer->connected, 2);
}

TEST_F(DaemonQuery, WhatIsNoAnswerIsNone) {
    auto const daemon = Statusd("");
    struct {
        std::string report;
        bool answered;
        std::chrono::milliseconds atLeast;
        std::chrono::milliseconds below;
    } const cases[] = {
        {"delay = 300", true, 300ms, 900ms},       {"answer = short", false, 0ms, 900ms},
        {"answer = long", false, 0ms, 900ms},      {"answer = noise", false, 0ms, 900ms},
        {"answer = silent", false, 990ms, 1500ms}, {"delay = 1500", false, 990ms, 1490ms},
    };
    for (auto const &expected : cases) {
        Report(expected.report);
        auto const [reply, time] = Timed(AskStatusd);
        EXPECT_TRUE(reply.canReceive) << expected.report;
        EXPECT_EQ(reply.answer != nullptr, expected.answered) << expected.report;
        EXPECT_GE(time, expected.atLeast) << expected.report;
        EXPECT_LT(time, expected.below) << expected.report;
    }
    EXPECT_EQ(log.Take(), Lines());
}

TEST_F(DaemonQuery, GarbageOfTheRightSizeIsAnAnswer) {
    DaemonProcess const daemon(SERIALD, Report("answer = garbage"), "\0vexa/seriald"sv);
    auto const answer = AskSeriald().answer;
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->apn, std::string(127, '\xff'));
    EXPECT_EQ(answer->moduleTemperature, -1);
}

TEST_F(DaemonQuery, ARequestNobodyTakesIsLoggedAndStillWaits) {
    struct {
        bool (*hasAnswer)();
        std::string line;
    } const cases[] = {
        {[] { return AskSeriald().answer != nullptr; },
         "error: vexaClient.Send(\"seriald\", cVexaMsgRequestGPRSStats) failed (DaemonQuery)"},
        {[] { return AskStatusd().answer != nullptr; },
         "error: vexaClient.Send(\"statusd\", cVexaMsgRequestServerStats) failed (DaemonQuery)"},
        {[] { return AskOpenvpnd().answer != nullptr; },
         "error: vexaClient.Send(\"openvpnd\", cVexaMsgRequestOpenVPNStats) failed (DaemonQuery)"},
    };
    for (auto const &expected : cases) {
        auto const [answered, time] = Timed(expected.hasAnswer);
        EXPECT_FALSE(answered);
        EXPECT_GE(time, 990ms);
        EXPECT_LT(time, 1500ms);
        EXPECT_EQ(log.Take(), Lines{expected.line});
    }
}

TEST_F(DaemonQuery, WithoutADescriptorItEndsAtOnce) {
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    rlimit const none{.rlim_cur = 0, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    auto const [reply, time] = Timed(AskStatusd);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(reply.canReceive);
    EXPECT_FALSE(reply.answer);
    EXPECT_LT(time, 500ms);
    EXPECT_EQ(log.Take(),
              (Lines{"error: vexaClient.Send(\"statusd\", cVexaMsgRequestServerStats) failed (DaemonQuery)",
                     "error: vexaClient.GetFd() failed (DaemonQuery)"}));
}

/// How many of as many queries at once are answered.
int AnswersOf(int queries) {
    std::atomic<int> answers = 0;
    {
        std::vector<std::jthread> threads(queries);
        for (auto &thread : threads)
            thread = std::jthread([&] { answers += AskStatusd().answer ? 1 : 0; });
    }
    return answers;
}

TEST_F(DaemonQuery, QueriesDoNotDisturbEachOther) {
    auto const daemon = Statusd("connected = 1");
    EXPECT_EQ(AnswersOf(8), 8);  // a new network namespace lets 11 datagrams wait at a socket
    daemon.Stop();               // alive, but nobody reads
    auto const [answers, time] = Timed([] { return AnswersOf(40); });
    EXPECT_EQ(answers, 0);
    EXPECT_LT(time, 2s);
}

class VexaHandlerTest : public testing::Test {
  protected:
    void Handle(cVexaMsg &message) { EXPECT_TRUE(handler.HandleMessage(&message, "anybody", client)); }

    VexaHandler handler;
    cVexa client{"test", &handler};
};

TEST_F(VexaHandlerTest, KeepsTheLatestOfEachKind) {
    cVexaMsgGPRSStats gprs;
    cVexaMsgServerStats server;
    cVexaMsgOpenVPNStats openVpn;
    for (std::uint8_t const round : {1, 2}) {
        gprs.bitErrorRate = round;
        server.connected = round;
        openVpn.secondsInState = round;
        Handle(gprs);
        Handle(server);
        Handle(openVpn);
    }
    gprs.bitErrorRate = 3;  // the handler has a copy
    EXPECT_EQ(handler.Take<cVexaMsgGPRSStats>()->bitErrorRate, 2u);
    EXPECT_EQ(handler.Take<cVexaMsgServerStats>()->connected, 2);
    EXPECT_EQ(handler.Take<cVexaMsgOpenVPNStats>()->secondsInState, 2u);
    EXPECT_FALSE(handler.Take<cVexaMsgGPRSStats>());
}

TEST_F(VexaHandlerTest, IgnoresOtherTypesAndFalseOnes) {
    cVexaMsgServerStats server;
    server.connected = 1;
    Handle(server);
    cVexaMsg falseServer(cVexaMsgServerStats::messageType);
    cVexaMsg falseGprs(cVexaMsgGPRSStats::messageType);
    cVexaMsgRequestServerStats request;
    for (cVexaMsg *message : {&falseServer, &falseGprs, static_cast<cVexaMsg *>(&request)})
        Handle(*message);
    EXPECT_EQ(handler.Take<cVexaMsgServerStats>()->connected, 1);
    EXPECT_FALSE(handler.Take<cVexaMsgGPRSStats>());
    EXPECT_FALSE(handler.Take<cVexaMsgOpenVPNStats>());
}

}  // namespace

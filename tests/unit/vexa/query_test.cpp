#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <future>
#include <string_view>

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
        {"delay = 300", true, 300ms, 900ms}, {"answer = silent", false, 990ms, 1500ms},
        {"delay = 1300", false, 990ms, 1290ms}, {"answer = normal", false, 0ms, 1500ms},
        {"answer = short", false, 0ms, 900ms}, {"answer = long", false, 0ms, 900ms},
        {"answer = noise", false, 0ms, 900ms}, {"answer = garbage", true, 0ms, 900ms},
    };
    for (auto const &expected : cases) {
        Report(expected.report);
        auto const [reply, time] = Timed(AskStatusd);
        if (expected.report == "answer = normal")
            continue;  // the daemon was busy with the late answer
        EXPECT_TRUE(reply.canReceive) << expected.report;
        EXPECT_EQ(reply.answer != nullptr, expected.answered) << expected.report;
        EXPECT_GE(time, expected.atLeast) << expected.report;
        EXPECT_LT(time, expected.below) << expected.report;
    }
    EXPECT_EQ(AskStatusd().answer->connected, 0xff);
    EXPECT_EQ(log.Take(), Lines());
}

}  // namespace

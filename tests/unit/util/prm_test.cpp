#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "WebApps/webconfig/util/Prm.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using webconfig::util::Prm;
using Lines = std::vector<std::string>;

TEST(Prm, FailedReadsGiveTheDefaultAndADebugLine) {
    LogCapture log(booster::log::debug);
    EXPECT_EQ(Prm::GetString("none"), "");
    EXPECT_EQ(Prm::GetInt("none"), 0);
    EXPECT_EQ(Prm::GetFloat("none"), 0.0f);
    EXPECT_EQ(log.Take(), Lines(3, "debug: FAIL prmlib::getPar \"none\" (Prm)"));

    std::string value;
    auto type = static_cast<PRM_PAR_T>(3);
    EXPECT_FALSE(Prm::Exists("none"));
    EXPECT_FALSE(Prm::Get("none", value, type));
    EXPECT_EQ(log.Take(), Lines());
}

TEST(Prm, FailedWritesGiveFalseAndAnErrorLine) {
    LogCapture log(booster::log::error);
    EXPECT_FALSE(Prm::Set("bad\n", 1));
    EXPECT_FALSE(Prm::Set("bad\n", 1.0f));
    EXPECT_FALSE(Prm::Set("bad\n", std::string("x")));
    EXPECT_EQ(log.Take(), Lines(3, "error: FAIL prmlib::setPar \"bad\n\" (Prm)"));
    EXPECT_FALSE(Prm::Delete("none"));
    EXPECT_FALSE(Prm::AddFile("file", "/none", 0666));
    EXPECT_EQ(log.Take(), Lines({"error: FAIL prmlib::delPar \"none\" (Prm)",
                                 "error: FAIL prmlib::addFile \"file\" (Prm)"}));
}

TEST(Prm, ValuesComeBackWithTheirType) {
    EXPECT_TRUE(Prm::Set("v/float", 2.5f));
    EXPECT_TRUE(Prm::Set("v/text", "yes"));
    std::ofstream("/tmp/prm_test_file") << "line\n";
    EXPECT_TRUE(Prm::AddFile("v/file", "/tmp/prm_test_file", 0666));
    EXPECT_EQ(Prm::GetFloat("v/float"), 2.5f);
    EXPECT_EQ(Prm::GetString("v/file"), "line\n");
    std::string value;
    auto type = static_cast<PRM_PAR_T>(3);
    EXPECT_TRUE(Prm::Get("v/text", value, type) && Prm::Exists("v/text"));
    EXPECT_EQ(value, "yes");
    EXPECT_EQ(static_cast<int>(type), 2);
}

/// The enumeration keeps its cursor in the shared client: without the lock the threads would see each
/// other's names.
TEST(Prm, EnumerationsOfSeveralThreadsDoNotMix) {
    Lines const wanted[] = {{"l/0/a", "l/0/b", "l/0/c"}, {"l/1/a", "l/1/b", "l/1/c"}};
    for (auto const &names : wanted) {
        for (auto const &name : names)
            Prm::Set(name, 1);
    }
    std::vector<std::thread> threads;
    threads.reserve(2);
    for (int n = 0; n < 2; ++n) {
        threads.emplace_back([&wanted, n] {
            for (int i = 0; i < 3000; ++i)
                ASSERT_EQ(Prm::GetList("l/" + std::to_string(n) + '/'), wanted[n]);
        });
    }
    for (auto &thread : threads)
        thread.join();
}

}  // namespace

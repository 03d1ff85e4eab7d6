#include <gtest/gtest.h>

#include <thread>

#include "WebApps/webconfig/util/Prm.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using webconfig::util::Prm;
using Lines = std::vector<std::string>;

TEST(Prm, FailuresAreLogged) {
    LogCapture log(booster::log::debug);
    EXPECT_EQ(Prm::GetInt("none"), 0);
    EXPECT_FALSE(Prm::Set("bad\n", 1));
    EXPECT_FALSE(Prm::AddFile("file", "/none", 0666));
    EXPECT_EQ(log.Take(), Lines({"debug: FAIL prmlib::getPar \"none\" (Prm)",
                                 "error: FAIL prmlib::setPar \"bad\n\" (Prm)",
                                 "error: FAIL prmlib::addFile \"file\" (Prm)"}));
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

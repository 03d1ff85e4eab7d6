#include "WebApps/webconfig/apps/ParameterWriter.h"

#include <gtest/gtest.h>

#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"

namespace webconfig {

using apps::ParameterWriter;
using data::Message;
using util::Prm;

namespace {

constexpr char badKey[] = "bad\n";  // the store refuses it

}  // namespace

TEST(ParameterWriterTest, NothingIsWrittenBehindTheFirstFailure) {
    ParameterWriter writer;
    writer.Set("w/text", "a").Set("w/number", 8).SetSwitch("w/switch", true);
    EXPECT_TRUE(writer.Ok());
    EXPECT_EQ(writer.Result(Message::OK("done")).GetText(), "done");
    EXPECT_EQ(Prm::GetInt("w/number"), 8);
    EXPECT_TRUE(util::IsOn("w/switch"));

    writer.Set(badKey, "x")
        .Set("w/text", "b")
        .Set("w/number", 9)
        .SetSwitch("w/switch", false)
        .SetIfChanged("w/text", "b")
        .SetSwitchIfChanged("w/switch", false);
    EXPECT_FALSE(writer.Ok());
    EXPECT_EQ(writer.Result(Message::OK("done")).GetText(), Message::SaveError().GetText());
    EXPECT_EQ(Prm::GetString("w/text"), "a");
    EXPECT_EQ(Prm::GetInt("w/number"), 8);
    EXPECT_TRUE(util::IsOn("w/switch"));
    EXPECT_TRUE(writer.Wrote("w/text"));
    EXPECT_FALSE(writer.Wrote(badKey));
}

TEST(ParameterWriterTest, WhatTheStoreHoldsIsNotWrittenAgain) {
    Prm::Set("c/text", std::string("a"));
    Prm::Set("c/on", std::string("yes"));
    Prm::Set("c/off", std::string("no"));
    Prm::Set("c/odd", std::string("YES"));
    ParameterWriter writer;
    writer.SetIfChanged("c/text", "a")
        .SetIfChanged("c/missing", "")
        .SetSwitchIfChanged("c/on", true)
        .SetSwitchIfChanged("c/off", false)
        .SetSwitchIfChanged("c/odd", false)
        .SetSwitchIfChanged("c/missing", false);
    for (char const *key : {"c/text", "c/on", "c/off", "c/odd", "c/missing"})
        EXPECT_FALSE(writer.Wrote(key)) << key;
    EXPECT_FALSE(Prm::Exists("c/missing"));

    writer.SetIfChanged("c/text", "").SetSwitchIfChanged("c/on", false).SetSwitchIfChanged("c/odd", true);
    EXPECT_TRUE(writer.Wrote("c/text"));
    EXPECT_EQ(Prm::GetString("c/text"), "");
    EXPECT_EQ(Prm::GetString("c/on"), "no");
    EXPECT_EQ(Prm::GetString("c/odd"), "yes");
}

}  // namespace webconfig

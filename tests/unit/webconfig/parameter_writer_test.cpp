#include "WebApps/webconfig/apps/ParameterWriter.h"

#include <gtest/gtest.h>

#include "WebApps/webconfig/util/Prm.h"

namespace webconfig {

using apps::ParameterWriter;
using util::Prm;

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

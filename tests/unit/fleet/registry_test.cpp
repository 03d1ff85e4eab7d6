// What devices say of themselves, and how it is looked for.
#include "fleet/console/Registry.h"

#include <gtest/gtest.h>

#include "fleet/Messages.h"

namespace {

using namespace fleet;
using namespace fleet::console;
namespace json = cppcms::json;

constexpr std::int64_t now = 1795322738;

json::value Parsed(std::string const &text) {
    json::value value;
    char const *begin = text.data();
    EXPECT_TRUE(value.load(begin, begin + text.size(), true)) << text;
    return value;
}

/// Four devices: "a" and "b" are of one kind, "c" of another, and "d" has not reported.
class RegistryTest : public ::testing::Test {
  protected:
    RegistryTest() {
        Report("a", "Mast 7", "1.0", R"({"net/hostname":"Mast 7","net/lan_gateway":"10.0.0.1"})");
        Report("b", "mast 10", "1.0", R"({"net/hostname":"mast 10","net/lan_gateway":"10.0.0.1"})");
        Report("c", "pump", "2.0",
               R"({"net/hostname":"pump","net/lan_gateway":"10.0.0.2","gprs/password":{"set":true}})");
        for (char const *device : {"a", "c", "d"})
            registry.Take(device, topics::online, "true", false, now);
        registry.SetTags({{"a", {"north"}}, {"c", {"north", "wet"}}});
        registry.SetTags("late", {"wet"});
    }
    void Report(std::string const &device, std::string const &name, char const *firmware,
                std::string const &settings) {
        json::value reported = Parsed(R"({"model":"brq4","serial":"S-)" + device + R"(","revision":"r"})");
        reported["name"] = name;
        reported["firmware"] = firmware;
        reported["settings"] = Parsed(settings);
        registry.Take(device, topics::reported, reported.save(), true, now);
    }
    void Health(std::int64_t time, char const *rest) {
        registry.Take("a", topics::health, R"({"time":)" + std::to_string(time) + rest + "}", false, time);
    }
    /// The ids that are found, in their order.
    std::string Found(std::string const &asked) {
        json::value const ask = Parsed(asked);
        json::value const found = registry.Devices(ReadFilter(ask), ReadWindow(ask));
        std::string ids;
        for (auto const &device : found["devices"].array())
            ids += device.get<std::string>("id");
        return ids + '/' + std::to_string(found.get<int>("matching"));
    }

    Registry registry{5};
};

TEST_F(RegistryTest, FindsDevices) {
    struct Case {
        char const *asked;
        char const *found;
    };
    for (auto const &[asked, found] : std::initializer_list<Case>{
             {R"({})", "abcd/4"},
             {R"({"search":"MAST"})", "ab/2"},
             {R"({"search":"s-c"})", "c/1"},
             {R"({"search":"wet"})", "c/1"},
             {R"({"online":true})", "acd/3"},
             {R"({"online":false})", "b/1"},
             {R"({"firmware":"1.0","online":true})", "a/1"},
             {R"({"firmware":"9"})", "/0"},
             {R"({"model":"brq4"})", "abc/3"},
             {R"({"tag":"north"})", "ac/2"},
             {R"({"tag":"nort"})", "/0"},
             {R"({"ids":["b","c","z"]})", "bc/2"},
             {R"({"ids":[]})", "/0"},
             // Another name is no difference, for each has its own.
             {R"({"differs":{"device":"a"}})", "c/1"},
             {R"({"differs":{"device":"c"}})", "ab/2"},
             {R"({"differs":{"device":"z"}})", "/0"},
             {R"({"differs":{"settings":{"net/lan_gateway":"10.0.0.2"}}})", "ab/2"},
             {R"({"differs":{"settings":{"net/lan_gateway":"10.9.9.9"}}})", "abc/3"},
             {R"({"differs":{"settings":{"gprs/password":{"set":true}}}})", "ab/2"},
             {R"({"sort":"name"})", "dabc/4"},
             {R"({"sort":"firmware","descending":true})", "cbad/4"},
             {R"({"sort":"online"})", "acdb/4"},
             {R"({"offset":1,"limit":2})", "bc/4"},
             {R"({"offset":9})", "/4"},
         })
        EXPECT_EQ(Found(asked), found) << asked;
    for (char const *asked : {R"({"sort":"size"})", R"({"online":1})", R"({"ids":"a"})", R"({"limit":-1})"})
        EXPECT_THROW(Found(asked), json::bad_value_cast) << asked;
    EXPECT_EQ(registry.Select({}),
              (std::vector<std::string>{"a", "c", "d", "b"}));  // who is there comes first
    json::value const all = registry.Devices({}, {});
    EXPECT_EQ(all["firmwares"], Parsed(R"({"1.0":2,"2.0":1})"));
    EXPECT_EQ(all["tags"], Parsed(R"({"north":2,"wet":1})"));
}

TEST_F(RegistryTest, TellsWhatADeviceHas) {
    json::value const device = registry.Device("c");
    EXPECT_EQ(device["settings"].object().size(), 3U);
    EXPECT_EQ(device["settings"]["net/lan_gateway"].str(), "10.0.0.2");
    EXPECT_TRUE(registry.Device("z").is_undefined());
    auto const before = [this](char const *id) {
        return json::value(registry.Before(
            id, Parsed(R"({"net/lan_gateway":1,"language":"","gprs/password":"x"})").object()));
    };
    EXPECT_EQ(before("c"),
              Parsed(R"({"net/lan_gateway":"10.0.0.2","language":null,"gprs/password":{"set":true}})"));
    EXPECT_EQ(before("d"), Parsed("{}"));

    for (int i = 0; i < 100; ++i)
        Health(now + i, R"(,"temperature":40.26,"load":0.5,"memory_total":1000,"memory_used":250)");
    Health(now + 99, R"(,"load":9)");  // again, after a new connection
    Health(now + 100, R"(,"signal":-77,"temperature":1e9)");
    auto const samples = registry.Health("a")["samples"].array();
    ASSERT_EQ(samples.size(), 60U);
    EXPECT_EQ(samples.front(), Parsed(R"({"time":)" + std::to_string(now + 41) +
                                      R"(,"temperature":40.3,"load":0.5,"memory":25})"));
    EXPECT_EQ(samples.back(), Parsed(R"({"time":)" + std::to_string(now + 100) + R"(,"signal":-77})"));

    registry.Lost();
    EXPECT_EQ(registry.Count(), (std::array<std::size_t, 2>{4, 0}));
    registry.Take("c", topics::online, "", false, now);  // somebody has it forgotten
    EXPECT_FALSE(registry.Knows("c"));
    EXPECT_EQ(Found(R"({"differs":{"settings":{"gprs/password":{"set":true}}}})"), "ab/2");
}

TEST_F(RegistryTest, TakesNoRubbish) {
    struct Case {
        char const *device;
        char const *name;
        std::string message;
    };
    for (auto const &[device, name, message] : std::vector<Case>{
             {"a/b", topics::online, "true"},
             {"", topics::online, "true"},
             {"a", topics::online, "maybe"},
             {"a", topics::reported, "[]"},
             {"a", topics::reported, R"({"settings":1})"},
             {"a", topics::health, "{"},
             {"a", topics::health, std::string(maxMessage + 1, ' ')},
         })
        EXPECT_THROW(registry.Take(device, name, message, false, now), Malformed) << name << ' ' << message;
    EXPECT_EQ(Found("{}"), "abcd/4");
    registry.Take("e", topics::online, "true", false, now);
    EXPECT_THROW(registry.Take("late", topics::online, "true", false, now), Malformed);  // one too many
    EXPECT_EQ(registry.Unreported("", 1), std::vector<std::string>{"d"});
    EXPECT_EQ(registry.Unreported("d", 9), std::vector<std::string>{"e"});
    Report("a", "two\nlines\x01" + std::string(1000, 'x'), "1.0", "{}");
    std::string const name = registry.NameOf("a");
    EXPECT_EQ(name.substr(0, 9), "two lines");
    EXPECT_LT(name.size(), 200U);
    registry.Take("a", topics::health, R"({"time":-5,"uptime":"x","load":null})", false, now);
    EXPECT_EQ(registry.Health("a")["samples"], Parsed("[{}]"));
}

}  // namespace

// What comes from the broker and from the configuration: read, or refused with the reason.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "fleet/Messages.h"
#include "fleet/agent/Settings.h"
#include "fleet/console/Patch.h"
#include "fleet/console/Refused.h"
#include "fleet/console/Settings.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace {

using namespace fleet;
namespace json = cppcms::json;

json::value Parsed(std::string const &text) {
    json::value value;
    char const *begin = text.data();
    EXPECT_TRUE(value.load(begin, begin + text.size(), true)) << text;
    return value;
}

std::string Tried(auto action) {
    try {
        action();
        return "taken";
    } catch (std::runtime_error const &refused) {
        return refused.what();
    }
}

TEST(FleetConsole, ReadsItsSettings) {
    auto const read = [](std::string const &members) {
        return Tried(
            [&] { console::ReadSettings(Parsed(R"({"fleet":{"broker":"mqtt://b")" + members + "}}")); });
    };
    for (auto const &[members, expected] : std::initializer_list<std::pair<char const *, char const *>>{
             {"", "taken"},
             {R"(,"most":1000000,"group":"g","root":"f","file":"/f")", "taken"},
             {R"(,"most":0)", "fleet.most: not 1 to 1000000"},
             {R"(,"most":"x")", "fleet.most: no whole number"},
             {R"(,"group":"a/#")", "fleet.group: not 1 to 64"},
             {R"(,"root":"a|b")", "fleet.root: not 1 to 64"},
             {R"(,"file":"")", "fleet.file: no file"},
         })
        EXPECT_TRUE(read(members).starts_with(expected)) << members << read(members);
}

TEST(FleetConsole, ChecksPatchesAndShowsNoSecret) {
    auto const wrong = [](std::string const &patch) {
        try {
            console::ReadPatch(Parsed(patch).object());
        } catch (console::Refused const &refused) {
            return refused.Reasons().is_undefined() ? refused.Code() : refused.Reasons().save();
        }
        return std::string();
    };
    for (auto const &[patch, expected] : std::initializer_list<std::pair<std::string, char const *>>{
             {R"({"net/hostname":"a","language":null,"system/remote/icmp_enabled":true,"debug/seriald":3,)"
              R"("gprs/password":{"set":true},"net/wifi/country":"XX","another/firmware":"x"})",
              ""},
             {R"({"net/hostname":""})", R"({"net/hostname":"Invalid length; minimum 1, maximum 64"})"},
             {R"({"debug/seriald":9})", R"({"debug/seriald":"Invalid range; minimum 0, maximum 5"})"},
             {R"({"debug/seriald":1.5})", R"({"debug/seriald":"No whole number"})"},
             {R"({"x":[]})", R"({"x":"Neither a text nor a whole number, true, false or null"})"},
             {"{}", "wrong"},
             {R"({"x":")" + std::string(40000, 'x') + "\"}", "wrong"},
         })
        EXPECT_EQ(wrong(patch), expected) << patch.substr(0, 100);
    EXPECT_EQ(
        console::ShownPatch(
            R"({"gprs/password":"x","cellular/sim_pin":null,"net/wifi/ap/wpa_psk":{"set":true},"a":"b"})"),
        Parsed(
            R"({"gprs/password":{"set":true},"cellular/sim_pin":{"set":false},"net/wifi/ap/wpa_psk":{"set":true},"a":"b"})"));
}

}  // namespace

TEST(FleetMessages, AChangeIsReadOrRefusedWithItsReason) {
    Change const change = ReadChange(
        R"({"id":"c-1","who":"Anna Özil","patch":{"net/hostname":"a","x":null},"based_on":"12ab","expires":1795000000,"restart":true})");
    EXPECT_EQ(change.id, "c-1");
    EXPECT_EQ(change.who, "Anna Özil");
    EXPECT_EQ(json::value(change.patch).save(), R"({"net/hostname":"a","x":null})");
    EXPECT_EQ(change.based_on, "12ab");
    EXPECT_EQ(change.expires, 1795000000);
    EXPECT_TRUE(change.restart);

    std::string const id = R"({"id":"c","who":"a","patch":{})";
    struct {
        std::string message;
        std::string reason;  // begins so
        std::string id;
    } const cases[] = {
        {"", "No JSON object", ""},
        {"[]", "No JSON object", ""},
        {std::string(100000, '['), "Longer than 65536", ""},
        {std::string(60000, '['), "No JSON object", ""},
        {id + "} x", "No JSON object", ""},
        {R"({"who":"a","patch":{}})", "\"id\"", ""},
        {R"({"id":5,"who":"a","patch":{}})", "\"id\"", ""},
        {R"({"id":"a/b","who":"a","patch":{}})", "\"id\"", ""},
        {R"({"id":")" + std::string(65, 'a') + R"(","who":"a","patch":{}})", "\"id\"", ""},
        {R"({"id":"c","patch":{}})", "\"who\"", "c"},
        {R"({"id":"c","who":"a\nb","patch":{}})", "\"who\"", "c"},
        {R"({"id":"c","who":"a\u0007","patch":{}})", "\"who\"", "c"},
        {R"({"id":"c","who":")" + std::string(65, 'a') + R"(","patch":{}})", "\"who\"", "c"},
        {R"({"id":"c","who":"a"})", "\"patch\"", "c"},
        {R"({"id":"c","who":"a","patch":[]})", "\"patch\"", "c"},
        {id + R"(,"based_on":1})", "\"based_on\"", "c"},
        {id + R"(,"expires":"soon"})", "\"based_on\"", "c"},
        {id + R"(,"expires":1.5})", "\"based_on\"", "c"},
        {id + R"(,"expires":1e300})", "\"based_on\"", "c"},
        {id + R"(,"restart":"yes"})", "\"based_on\"", "c"},
    };
    for (auto const &[message, reason, told] : cases) {
        try {
            ReadChange(message);
            ADD_FAILURE() << message;
        } catch (Malformed const &malformed) {
            EXPECT_TRUE(std::string(malformed.what()).starts_with(reason)) << malformed.what();
            EXPECT_EQ(malformed.Id(), told) << message.substr(0, 80);
        }
    }
}

TEST(FleetSettings, AreReadAndCheckedWithTheirFiles) {
    TemporaryFolder const folder;
    std::string const path = folder.Path() + "/";
    for (auto const &[name, mode] : {std::pair{"open", 0644}, {"key", 0600}}) {
        std::ofstream(path + name) << "sesame\n";
        ::chmod((path + name).c_str(), mode);
    }
    struct {
        std::string members;
        std::string expected;  // in the place of the reason
    } const cases[] = {
        {R"("broker":"mqtt://b")", "taken"},
        {R"("broker":"http://b")", "webconfig.fleet.broker: not mqtt://"},
        {R"("broker":7)", "webconfig.fleet.broker: no text"},
        {R"("broker":"mqtt://")", "webconfig.fleet.broker: no host"},
        {R"("broker":"mqtt://u@b")", "webconfig.fleet.broker: no host"},
        {R"("broker":"mqtt://[::1")", "webconfig.fleet.broker: no host"},
        {R"("broker":"mqtt://b:0")", "webconfig.fleet.broker: no port"},
        {R"("broker":"mqtt://b:1x")", "webconfig.fleet.broker: no port"},
        {R"("broker":"mqtt://b","id":"a/b")", "webconfig.fleet.id: not 1 to 64"},
        {R"("broker":"mqtt://b","health":1)", "webconfig.fleet.health: less than 10"},
        {R"("broker":"mqtt://b","health":"1")", "webconfig.fleet.health: no whole number"},
        {R"("broker":"mqtt://b","ca":"PATHopen")", "webconfig.fleet.broker: certificates need mqtts"},
        {R"("broker":"mqtts://b","certificate":"PATHopen")",
         "webconfig.fleet.certificate: a certificate needs"},
        {R"("broker":"mqtts://b","ca":"PATHnone")", "webconfig.fleet.ca: PATHnone: No such file"},
        {R"("broker":"mqtts://b","ca":"PATH")", "webconfig.fleet.ca: PATH: not a file"},
        {R"("broker":"mqtts://b","certificate":"PATHopen","key":"PATHopen")",
         "webconfig.fleet.key: PATHopen: others may read it"},
        {R"("broker":"mqtts://b","user":"u","password_file":"PATHopen")",
         "webconfig.fleet.password_file: PATHopen: others"},
    };
    auto const read = [&path](std::string members) {
        for (std::size_t at; (at = members.find("PATH")) != std::string::npos;)
            members.replace(at, 4, path);
        return agent::ReadSettings(
            Parsed(R"({"webconfig":{"api":true,"history":{"file":"h"},"fleet":{)" + members + "}}}"));
    };
    for (auto [members, expected] : cases) {
        std::string const said = Tried([&] { read(members); });
        if (auto const at = expected.find("PATH"); at != std::string::npos)
            expected.replace(at, 4, path);
        EXPECT_TRUE(said.starts_with(expected)) << members << said;
    }
    auto const settings =
        read(R"("broker":"mqtts://[fd00::1]:9","id":"d.1","certificate":"PATHopen","key":"PATHkey",)"
             R"("password_file":"PATHkey")");
    EXPECT_EQ(settings.broker.host, "fd00::1");
    EXPECT_EQ(settings.broker.port, 9);
    EXPECT_TRUE(settings.broker.tls);
    EXPECT_EQ(settings.broker.password, "sesame");
    EXPECT_EQ(read(R"("broker":"mqtts://b")").broker.port, 8883);

    EXPECT_TRUE(Tried([] {
                    agent::ReadSettings(Parsed(R"({"webconfig":{"fleet":{"broker":"mqtt://b"}}})"));
                }).starts_with("webconfig.fleet.broker: needs webconfig.api"));
    EXPECT_FALSE(agent::IsAskedFor(Parsed(R"({"webconfig":{"fleet":{"id":"x"}}})")));
    EXPECT_EQ(agent::IdOf("VD-1", "host"), "VD-1");
    EXPECT_EQ(agent::IdOf("1/2", "host"), "host");
    EXPECT_TRUE(Tried([] { agent::IdOf("", ""); }).starts_with("webconfig.fleet.id"));
}

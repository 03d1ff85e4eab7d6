// What the agent makes of changes, wherever it is interrupted.
#include "fleet/agent/Agent.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "tests/unit/platform/TemporaryFolder.h"

namespace {

using namespace fleet;
using namespace fleet::agent;
using namespace std::chrono_literals;
namespace json = cppcms::json;

struct PowerCut {};

/// A device's service, its history and its guard. What "reach" is set to is on trial, and so is, from the
/// restart on, what "later" is set to; "dns" wants a restart, and is on no trial.
class FakeService : public Service {
  public:
    json::value Call(std::string const &method, json::array const &parameters,
                     std::string const &user) override {
        if (away)
            throw Away("away");
        bool const cut = ++calls == cutAt;
        if (cut && !cutBehind)
            throw PowerCut();
        json::value const result = Answer(method, parameters, user);
        if (cut)
            throw PowerCut();
        return result;
    }

    std::int64_t Record(std::string const &user, json::object const &patch, char const *result = "saved") {
        json::value set;
        set["number"] = ++newest;
        set["user"] = user;
        set["result"] = result;
        set["changes"] = json::array();
        for (auto const &[key, value] : patch) {
            json::value change;
            change["key"] = key.str();
            before[newest][key.str()] = store[key.str()];
            store[key.str()] = value.str();
            set["changes"].array().push_back(change);
        }
        history.push_back(set);
        return newest;
    }

    void TakeBack() {
        json::object back;
        for (auto const &[number, values] : before)
            for (auto const &[key, value] : values)
                if (number >= trialSet)
                    back.try_emplace(key, value);
        Record("webconfig-guard", back);
        state = "returned";
    }

    void Restart() {
        ++boot;
        ++restarts;
        restarting = pending = false;
        if (state == "waiting")
            state = "running";
    }

    int Made(std::string const &user) const {
        return static_cast<int>(std::count_if(history.begin(), history.end(),
                                              [&](auto const &set) { return set.get("user", "") == user; }));
    }

    std::map<std::string, std::string> store;
    std::vector<json::value> history;
    std::string state = "none";
    std::int64_t trialSet = 0;
    int calls = 0;
    int cutAt = 0;
    bool cutBehind = false;
    bool away = false;
    bool busy = false;
    bool dies = false;  // with the first of the values
    int boot = 1;
    int restarts = 0;
    bool pending = false;     // a restart is needed
    bool restarting = false;  // it is under way

  private:
    json::value Answer(std::string const &method, json::array const &parameters, std::string const &user) {
        json::value result;
        if (method == "settings_set")
            return Set(parameters[0].object(), user);
        if (method == "trial_keep") {
            bool const keeps = state == "running";
            if (keeps)
                state = "none";
            return keeps;
        }
        if (method == "device_restart") {
            bool const asked = parameters[0].str() == std::to_string(boot);
            restarting = restarting || asked;
            return asked;
        }
        if (method == "trial_status") {
            result["state"] = state;
            result["seconds"] = state == "running" ? 8 : 0;
            if (state != "none")
                result["set"] = trialSet;
        } else if (method == "history_list") {
            result = json::array();
            auto const limit = parameters[0].get_value<std::int64_t>();
            for (auto set = history.rbegin(); set != history.rend(); ++set)
                if ((limit == 0 || set->get<std::int64_t>("number") < limit) &&
                    result.array().size() < parameters[1].get_value<std::size_t>())
                    result.array().push_back(*set);
        } else if (method == "settings_get") {
            result = json::object();
            for (auto const &[key, value] : store)
                result[key] = value;
        } else if (method == "metrics") {
            result["now"]["load"] = 0.5;
        } else {
            result["boot"] = std::to_string(boot);
            result["restart"] = pending;
        }
        return result;
    }

    json::value Set(json::object const &patch, std::string const &user) {
        json::value error;
        if (busy) {
            error["code"] = "busy";
            throw Denied("settings_set", error);
        }
        if (patch.contains("wrong")) {
            error["code"] = "refused";
            error["refused"]["wrong"] = "Invalid";
            throw Denied("settings_set", error);
        }
        json::object news;
        for (auto const &[key, value] : patch)
            if (store[key.str()] != value.str())
                news[key] = value;
        if (dies) {
            dies = false;
            Record(user, {*news.begin()}, "unfinished");
            throw Away("died");
        }
        json::value made;
        made["changed"] = json::array();
        for (auto const &[key, value] : news)
            made["changed"].array().emplace_back(key.str());
        made["set"] = json::null();
        pending = pending || news.contains("later") || news.contains("dns");
        made["restart"] = pending;
        if (!news.empty())
            made["set"] = Record(user, news);
        if (news.contains("reach") || news.contains("later")) {
            if (state == "none" || state == "returned")
                trialSet = newest;
            state = news.contains("reach") ? "running" : "waiting";
        }
        made["trial"] = Answer("trial_status", {}, "");
        return made;
    }

    std::int64_t newest = 0;
    std::map<std::int64_t, std::map<std::string, std::string>> before;
};

class FakeBroker : public Broker {
  public:
    int Publish(char const *topic, std::string const &message, bool retained) override {
        if (!connected)
            return 0;
        EXPECT_EQ(retained, std::string(topic) != topics::result);
        sent.emplace_back(topic, message);
        return static_cast<int>(sent.size());
    }
    void Reopen(std::chrono::seconds delay) override {
        connected = false;
        settled = delay;
    }
    void Hurry(bool /*hurry*/) override {}

    bool connected = false;
    std::chrono::seconds settled{};
    std::vector<std::pair<std::string, std::string>> sent;
    std::size_t acknowledged = 0;
};

struct FleetAgent : testing::Test {
    FleetAgent() { Start(); }

    void Start() {
        agent.reset();
        journal = std::make_unique<Journal>(folder.Path() + "/fleet.db");
        broker.connected = false;
        broker.acknowledged = broker.sent.size();
        agent = std::make_unique<Agent>(60s, service, broker, *journal, [this] { return clock; });
    }

    /// Seconds go by. After a power cut all begins again, and the broker sends what was not acknowledged. The
    /// broker is not reached where that is so, or, where they cut it off, with all of the new settings.
    void Pass(int seconds = 5) {
        for (; seconds > 0; --seconds) {
            try {
                while (!waiting.empty()) {
                    agent->Take(waiting.front());
                    waiting.erase(waiting.begin());
                }
                if (!broker.connected && reachable &&
                    !(cutsOff && service.state == "running" && !service.pending)) {
                    broker.connected = true;
                    agent->Reached(true);
                }
                agent->Work(now += 1s);
                for (; broker.connected && broker.acknowledged < broker.sent.size();)
                    agent->Acknowledged(static_cast<int>(++broker.acknowledged));
                if (service.restarting) {
                    EXPECT_FALSE(Results().empty()) << "nobody knows why it restarts";
                    service.Restart();
                    Start();
                }
            } catch (PowerCut const &) {
                Start();
            }
        }
    }

    void Send(std::string const &id, std::string const &patch, std::string const &more = "") {
        waiting.push_back(R"({"id":")" + id + R"(","who":"anna","patch":)" + patch + more + "}");
    }

    std::vector<json::value> Results() const {
        std::vector<json::value> results;
        for (auto const &[topic, message] : broker.sent) {
            char const *begin = message.data();
            if (topic == topics::result)
                results.emplace_back().load(begin, begin + message.size(), true);
        }
        return results;
    }
    /// States of the results, without repetitions.
    std::string States() const {
        std::vector<std::string> states;
        for (auto const &result : Results()) {
            auto const code = result.get("code", "");
            auto const state = result.get("state", "") + (code.empty() ? "" : ":" + code);
            if (states.empty() || states.back() != state)
                states.push_back(state);
        }
        std::string text;
        for (auto const &state : states)
            text += (text.empty() ? "" : " ") + state;
        return text;
    }
    std::string Revision() {
        Pass();
        for (auto sent = broker.sent.rbegin(); sent != broker.sent.rend(); ++sent)
            if (sent->first == topics::reported)
                return sent->second.substr(sent->second.find("revision") + 11, 16);
        return "";
    }

    TemporaryFolder const folder{"/dev/shm"};
    FakeService service;
    FakeBroker broker;
    std::unique_ptr<Journal> journal;
    std::unique_ptr<Agent> agent;
    std::vector<std::string> waiting;
    bool reachable = true;
    bool cutsOff = false;
    std::time_t clock = 1000;
    std::chrono::steady_clock::time_point now{};
};

/// Of a fresh fixture each: who is cut off at which call.
struct Round : FleetAgent {
    void TestBody() override {}
};

}  // namespace

TEST(FleetAgentCut, AtEveryCallAChangeIsMadeOnceAndItsEndIsTold) {
    struct {
        char const *patch;
        char const *more;
        bool reachable;  // with the new settings
        std::string state;
        int restarts;
    } const cases[] = {{R"({"a":"1","b":"2"})", "", true, "done", 0},
                       {R"({"a":"1"})", R"(,"restart":true)", true, "done", 0},
                       {R"({"dns":"x"})", R"(,"restart":true)", true, "done", 1},
                       {R"({"reach":"x","b":"2"})", "", true, "kept", 0},
                       {R"({"reach":"x"})", "", false, "returned", 0},
                       {R"({"later":"x"})", R"(,"restart":true)", true, "kept", 1},
                       {R"({"later":"x"})", R"(,"restart":true)", false, "returned", 1},
                       {R"({"reach":"x","later":"x"})", R"(,"restart":true)", true, "kept", 1},
                       {R"({"reach":"x","later":"x"})", R"(,"restart":true)", false, "returned", 1},
                       {R"({"wrong":"x"})", R"(,"restart":true)", true, "refused", 0}};
    for (auto const &[patch, more, reachable, state, restarts] : cases) {
        int cuts = 0;
        for (bool ends = false; !ends; ++cuts) {
            for (bool const behind : {false, true}) {
                Round round;
                round.service.cutAt = cuts + 1;
                round.service.cutBehind = behind;
                round.cutsOff = !reachable;
                round.Send("c1", patch, more);
                round.Pass(8);
                if (round.service.state == "running")
                    round.service.TakeBack();
                round.Pass(5);
                std::string const point =
                    std::string(patch) + " at " + std::to_string(cuts + 1) + (behind ? "+" : "");
                ASSERT_FALSE(round.Results().empty()) << point;
                auto const last = round.Results().back();
                EXPECT_EQ(round.service.Made("fleet: anna"), state == "refused" ? 0 : 1) << point;
                EXPECT_EQ(round.service.restarts, restarts) << point;
                EXPECT_EQ(last.get("state", ""), state) << point << ' ' << round.States();
                auto &store = round.service.store;
                EXPECT_EQ(store["reach"] + store["later"] != "", state == "kept") << point;
                ends = round.service.calls <= round.service.cutAt;
            }
        }
        EXPECT_GT(cuts, 4);
    }
}

TEST_F(FleetAgent, TheSameChangeIsMadeOnceAndToldAgain) {
    Send("c1", R"({"a":"1"})");
    Pass();
    service.store["a"] = "else";
    Send("c1", R"({"a":"1"})");
    Pass();
    EXPECT_EQ(service.store["a"], "else");
    ASSERT_EQ(Results().size(), 2U);
    EXPECT_EQ(Results()[0].save(), Results()[1].save());
    EXPECT_EQ(Results()[0].get<int>("set"), 1);
}

TEST_F(FleetAgent, WhatCannotBeMadeIsRefusedWithItsReason) {
    std::string const revision = Revision();
    Send("c1", R"({"wrong":"x"})");
    Send("c2", R"({"a":"1"})", R"(,"expires":999)");
    Send("c3", R"({"a":"1"})", R"(,"based_on":"other")");
    Send("c4", "[]");
    waiting.emplace_back("rubbish");
    Send("c5", R"({"a":"1"})", R"(,"expires":1000,"based_on":")" + revision + "\"");
    Pass(10);
    EXPECT_EQ(States(), "refused:malformed refused:refused refused:expired refused:conflict done");
    EXPECT_EQ(Results()[1]["refused"].save(), R"({"wrong":"Invalid"})");
    EXPECT_NE(Revision(), revision);
    EXPECT_EQ(Results().back().get("revision", ""), Revision());
}

TEST_F(FleetAgent, OnlyANewConnectionKeepsWhatTheFleetAloneHasChanged) {
    Pass();
    reachable = false;
    Send("c1", R"({"reach":"x"})");
    Send("c2", R"({"a":"1"})");
    Pass();
    EXPECT_EQ(service.state, "running");
    EXPECT_EQ(broker.settled, 2s);
    EXPECT_EQ(service.store["a"], "") << "it would go back with the first";
    service.Record("admin", {{"b", "mine"}});
    reachable = true;
    Pass();
    EXPECT_EQ(service.state, "running") << "somebody else has changed something, too";
    service.TakeBack();
    Pass();
    EXPECT_EQ(States(), "trial returned done");

    service.state = "running";  // somebody else's
    service.trialSet = service.Record("admin", {{"reach", "y"}});
    Send("c3", R"({"a":"3"})");
    Pass();
    EXPECT_EQ(service.state, "running");
    EXPECT_EQ(service.store["a"], "1");
}

TEST_F(FleetAgent, WhatWaitsForARestartHoldsNothingUpAndIsKeptBehindIt) {
    Send("c1", R"({"later":"x"})");
    Send("c2", R"({"a":"1"})");
    Pass(10);
    EXPECT_EQ(service.store["a"], "1");
    EXPECT_EQ(service.state, "waiting");
    service.state = "running";
    Start();
    Pass();
    EXPECT_EQ(service.state, "none");
    EXPECT_EQ(States(), "trial kept");
    EXPECT_EQ(Results().size(), 4U);
}

TEST_F(FleetAgent, AServiceThatIsAwayBusyOrDiesLosesNothing) {
    service.away = true;
    Send("c1", R"({"a":"1","b":"2"})");
    Pass();
    service.away = false;
    service.busy = true;
    Pass(10);
    EXPECT_EQ(States(), "");
    service.busy = false;
    service.dies = true;
    Pass(10);
    EXPECT_EQ(States(), "done");
    EXPECT_EQ(service.store["a"] + service.store["b"], "12");
}

TEST_F(FleetAgent, ReportsWhatHasChangedOnly) {
    auto const reports = [this] {
        return std::count_if(broker.sent.begin(), broker.sent.end(),
                             [](auto const &one) { return one.first == topics::reported; });
    };
    Pass(30);
    EXPECT_EQ(reports(), 1);
    service.store["a"] = "1";
    Pass(30);
    EXPECT_EQ(reports(), 2);
    agent->Lost();
    agent->Reached(true);
    Pass(30);
    EXPECT_EQ(reports(), 2);
    agent->Reached(false);
    Pass(1);
    EXPECT_EQ(reports(), 3) << "the broker has forgotten it";
}

// What becomes of changes and rollouts, wherever the console is cut off: at each write of its store and each
// message, before and behind, and at each loss of its connection.
#include "fleet/console/Conductor.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>

#include "fleet/Messages.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace {

using namespace fleet;
using namespace fleet::console;
namespace json = cppcms::json;

constexpr std::int64_t begin = 1000000;
constexpr int keep = 10;
constexpr std::int64_t day = 24 * 60 * 60;

struct PowerCut {};

/// Where it happens: when the count has come down to it.
struct Cut {
    int at = 0;
    bool behind = false;
    bool isLoss = false;  // of the connection, not of the power
    int steps = 0;        // that there were
    bool isDue() { return ++steps == at; }
};

/// How a device takes its change.
enum class Kind { Done, Trial, Refuses, GoesDark };

struct FakeDevice {
    Kind kind = Kind::Done;
    bool online = true;
    std::string value = "old";
    std::map<std::string, json::value> known;  // results by the ids of changes
    std::vector<std::int64_t> applied;         // when
    std::int64_t trialUntil = 0;
    std::string trial;
};

/// The broker, and the devices behind it; they outlive consoles.
class FakeFleet : public Publisher {
  public:
    std::map<std::string, FakeDevice> devices;
    std::int64_t now = begin;
    bool connected = false;
    Cut *cut = nullptr;
    std::vector<std::pair<std::string, std::string>> results;  // on their way to the console
    std::vector<int> acknowledgements;
    int messages = 0;

    int Publish(std::string const &topic, std::string const &message, bool /*retained*/) override {
        bool const due = cut && cut->isDue();
        if (due && cut->isLoss)
            connected = false;
        else if (due && !cut->behind)
            throw PowerCut();
        if (!connected)
            return 0;
        Deliver(std::string(ReadTopic(topic).device), ReadChange(message));
        if (due && cut->behind)
            throw PowerCut();
        acknowledgements.push_back(++messages);
        return messages;
    }

    /// Trials end, and devices that have gone dark come back.
    void Live() {
        for (auto &[id, device] : devices) {
            if (device.trial.empty() || now < device.trialUntil)
                continue;
            bool const kept = device.kind == Kind::Trial;
            if (!kept)
                device.value = "old";
            device.online = true;
            Tell(id, std::exchange(device.trial, ""), kept ? "kept" : "returned");
        }
    }

  private:
    void Tell(std::string const &id, std::string const &change, char const *state) {
        json::value result;
        result["id"] = change;
        result["state"] = state;
        if (state == std::string_view("trial"))
            result["seconds"] = 20;
        if (state == std::string_view("refused"))
            result["code"] = "refused";
        devices[id].known[change] = result;
        results.emplace_back(id, result.save());
    }

    void Deliver(std::string const &id, fleet::Change const &change) {
        FakeDevice &device = devices[id];
        ASSERT_TRUE(device.online) << id << " is sent what waits with the broker";
        if (auto const known = device.known.find(change.id); known != device.known.end()) {
            results.emplace_back(id, known->second.save());
            return;
        }
        if (now > change.expires || device.kind == Kind::Refuses) {
            Tell(id, change.id, "refused");
            return;
        }
        device.applied.push_back(now);
        device.value = change.patch.at("net/hostname").str();
        if (device.kind == Kind::Done) {
            Tell(id, change.id, "done");
            return;
        }
        device.trial = change.id;
        device.trialUntil = now + (device.kind == Kind::Trial ? 5 : 40);
        device.online = device.kind == Kind::Trial;
        if (device.online)
            Tell(id, change.id, "trial");
        else
            device.known[change.id]["id"] = change.id;
    }
};

class CutStore : public Store {
  public:
    CutStore(std::string const &path, Cut *cut) : Store(path), _cut(cut) {}

  private:
    void _Commit(sqlite::Transaction &transaction) override {
        bool const due = _cut && !_cut->isLoss && _cut->isDue();
        if (due && !_cut->behind)
            throw PowerCut();
        transaction.Commit();
        if (due)
            throw PowerCut();
    }
    Cut *const _cut;
};

/// A console's process, with what it is told by the broker when it comes.
struct Process {
    Process(std::string const &path, FakeFleet &all, Cut *cut)
        : fleet(all), store(path, cut), conductor(store, registry, all, keep, [&all] { return all.now; }) {}

    void Connect() {
        fleet.connected = true;
        fleet.results.clear();  // what has come meanwhile is lost
        fleet.acknowledgements.clear();
        registry.Lost();
        conductor.Reached();
    }
    void Hear() {
        for (auto const &[id, device] : fleet.devices) {
            json::value reported;
            reported["settings"]["net/hostname"] = device.value;
            registry.Take(id, topics::online, device.online ? "true" : "false", true, fleet.now);
            if (heard > 1)  // that comes later
                registry.Take(id, topics::reported, reported.save(), true, fleet.now);
        }
        ++heard;
        for (int const message : std::exchange(fleet.acknowledgements, {}))
            conductor.Acknowledged(message);
        for (auto const &[id, result] : std::exchange(fleet.results, {}))
            conductor.TakeResult(id, result);
    }

    FakeFleet &fleet;
    int heard = 0;
    Registry registry{100};
    CutStore store;
    Conductor conductor;
};

/// Devices, and a store that outlives processes.
class World {
  public:
    explicit World(std::map<std::string, Kind> const &kinds, Cut cut = {}) : _cut(cut) {
        for (auto const &[id, kind] : kinds)
            fleet.devices[id].kind = kind;
        fleet.cut = &_cut;
        Begin();
    }

    /// Does \a what, which is done again where it was cut off: as somebody would.
    void Do(std::function<void(Conductor &)> const &what) {
        Tried([&] {
            try {
                what(process->conductor);
            } catch (Refused const &refused) {
                EXPECT_TRUE(refused.Code() == "state" && _cut.steps >= _cut.at) << refused.what();
            }
        });
    }
    void Pass(int seconds) {
        for (int i = 0; i < seconds; ++i) {
            ++fleet.now;
            fleet.Live();
            Tried([this] {
                if (!fleet.connected) {
                    process->conductor.Lost();
                    process->Connect();
                }
                process->Hear();
                process->conductor.Work(true);
            });
        }
    }
    std::string States(std::int64_t rollout) {
        std::string states;
        for (auto const &member : Store::Reading(process->store)->Members(rollout, {}, 0, -1))
            states += member.device + ':' + NameOf(member.state) + ' ';
        return states;
    }
    std::string StateOf(std::int64_t rollout) {
        return NameOf(Store::Reading(process->store)->Rollout(rollout)->state);
    }
    std::string Values() const {
        std::string values;
        for (auto const &[id, device] : fleet.devices)
            values += device.value + ' ';
        return values;
    }
    /// Whether the cut has happened.
    bool IsCut() const { return _cut.steps >= _cut.at; }

    FakeFleet fleet;
    std::unique_ptr<Process> process;

  private:
    void Begin() {
        process.reset();
        process = std::make_unique<Process>(_folder / "fleet.db", fleet, &_cut);
        process->Connect();
        process->Hear();
    }
    void Tried(std::function<void()> const &what) {
        try {
            what();
        } catch (PowerCut const &) {
            Begin();
            if (what)
                what();
        }
    }

    TemporaryFolder const _folder{"/dev/shm"};
    Cut _cut;
};

RolloutRow Rollout(char const *value, std::int64_t wave, std::int64_t limit) {
    RolloutRow rollout;
    rollout.title = "Names";
    rollout.who = "anna";
    rollout.patch = std::string(R"({"net/hostname":")") + value + "\"}";
    rollout.wave = wave;
    rollout.limit = limit;
    rollout.patience = 30;
    rollout.settle = 3;
    return rollout;
}

/// Runs \a scenario with a cut at each of its steps.
void CutEverywhere(std::map<std::string, Kind> const &kinds, std::function<void(World &)> const &scenario) {
    for (auto const &[behind, isLoss] : {std::pair(false, false), {true, false}, {false, true}}) {
        for (int at = 1;; ++at) {
            World world(kinds, {.at = at, .behind = behind, .isLoss = isLoss});
            scenario(world);
            if (::testing::Test::HasFailure()) {
                ADD_FAILURE() << "cut at " << at
                              << (isLoss   ? ", connection"
                                  : behind ? ", behind"
                                           : ", before");
                return;
            }
            if (!world.IsCut())
                break;
        }
    }
}

/// It is begun once, wherever that is cut off.
void Begin(World &world, RolloutRow const &rollout) {
    world.Do([&](Conductor &conductor) {
        if (Store::Reading(world.process->store)->CountRollouts() == 0)
            conductor.RollOut(rollout, {});
    });
}

TEST(Conductor, LosesNoChangeAndMakesNoneTwice) {
    CutEverywhere(
        {{"a", Kind::Done}, {"b", Kind::Trial}, {"c", Kind::Refuses}, {"d", Kind::Done}, {"e", Kind::Trial}},
        [](World &world) {
            world.fleet.devices["d"].online = false;
            world.Pass(1);
            Begin(world, Rollout("new", 3, 60));
            world.Pass(15);
            world.fleet.devices["d"].online = true;
            world.Pass(45);
            EXPECT_EQ(world.StateOf(1), "done");
            EXPECT_EQ(world.States(1), "a:done b:kept c:refused e:kept d:done ");
            EXPECT_EQ(world.Values(), "new new old new new ");
            for (auto const &[id, device] : world.fleet.devices)
                EXPECT_EQ(device.applied.size(), id == "c" ? 0U : 1U) << id;
        });
}

TEST(Conductor, StopsAtACanaryThatGoesDarkAndTouchesNobodyElse) {
    CutEverywhere({{"a", Kind::GoesDark}, {"b", Kind::Done}, {"c", Kind::Done}}, [](World &world) {
        Begin(world, Rollout("new", 10, 5));
        world.Pass(120);
        EXPECT_EQ(world.StateOf(1), "stopped");
        EXPECT_EQ(world.States(1), "a:returned b:waiting c:waiting ");
        EXPECT_EQ(world.Values(), "old old old ");
        EXPECT_TRUE(world.fleet.devices["b"].known.empty());
        // Somebody has seen it, and goes on.
        world.Do([](Conductor &conductor) { conductor.GoOn(1, "bert"); });
        world.Pass(60);
        EXPECT_EQ(world.StateOf(1), "done");
        EXPECT_EQ(world.States(1), "a:returned b:done c:done ");
    });
}

TEST(Conductor, SendsNothingWhilePausedAndLosesNothingByThat) {
    CutEverywhere({{"a", Kind::Done}, {"b", Kind::Done}, {"c", Kind::Done}}, [](World &world) {
        Begin(world, Rollout("new", 1, 5));
        world.Pass(7);
        world.fleet.devices["c"].online = false;  // its turn may have come
        world.Do([](Conductor &conductor) { conductor.Pause(1, "anna"); });
        std::int64_t const paused = world.fleet.now;
        world.Pass(60);
        for (auto const &[id, device] : world.fleet.devices)
            EXPECT_TRUE(device.applied.empty() || device.applied.back() <= paused) << id;
        world.Do([](Conductor &conductor) { conductor.GoOn(1, "anna"); });
        world.Pass(10);
        world.fleet.devices["c"].online = true;
        world.Pass(40);
        EXPECT_EQ(world.States(1), "a:done b:done c:done ");
        for (auto const &[id, device] : world.fleet.devices)
            EXPECT_EQ(device.applied.size(), 1U) << id;
    });
}

TEST(Conductor, TakesBackAlsoWhatIsUnderWay) {
    CutEverywhere({{"a", Kind::Done}, {"b", Kind::Trial}, {"c", Kind::Done}, {"d", Kind::Done}},
                  [](World &world) {
                      Begin(world, Rollout("new", 1, 5));
                      while (world.fleet.devices["b"].trial.empty() && world.fleet.now < begin + 100)
                          world.Pass(1);
                      world.Do([](Conductor &conductor) { conductor.TakeBack(1, "anna"); });
                      world.fleet.devices["b"].kind = Kind::Trial;
                      world.Pass(80);
                      EXPECT_EQ(world.StateOf(1), "taken_back");
                      EXPECT_EQ(world.States(1), "a:done b:kept c:withdrawn d:withdrawn ");
                      EXPECT_EQ(world.StateOf(2), "done");
                      EXPECT_EQ(world.States(2), "a:done b:kept ");
                      EXPECT_EQ(world.Values(), "old old old old ");
                  });
}

TEST(Conductor, WaitsForMembersThatGoOffline) {
    World world({{"a", Kind::Done}, {"b", Kind::Done}, {"c", Kind::Done}});
    Begin(world, Rollout("new", 1, 40));
    world.Pass(2);
    world.fleet.devices["a"].online = false;
    world.Pass(25);
    EXPECT_EQ(world.States(1), "a:done b:waiting c:waiting ");
    world.fleet.devices["a"].online = true;
    world.Pass(3);
    world.fleet.devices["b"].online = false;
    world.Pass(60);
    EXPECT_EQ(world.States(1), "a:done b:silent c:waiting ");
    EXPECT_EQ(world.StateOf(1), "stopped");
}

TEST(Conductor, GivesUpAndListensOn) {
    World world({{"a", Kind::Done}, {"b", Kind::Done}, {"c", Kind::Done}});
    world.fleet.devices["b"].online = false;
    world.Pass(2);
    json::value nobody;
    nobody["search"] = "nobody";
    world.Do([&](Conductor &conductor) {
        for (char const *device : {"a", "b", "c"})
            conductor.Change("anna", device, {{"net/hostname", "x"}}, "", false);
        EXPECT_THROW(conductor.Change("anna", "z", {{"net/hostname", "x"}}, "", false), Refused);
        EXPECT_THROW(conductor.RollOut({}, ReadFilter(nobody)), Refused);
        EXPECT_THROW(conductor.Forget("a"), Refused);  // it is online
    });
    auto const state = [&](std::int64_t change) {
        return std::string(NameOf(Store::Reading(world.process->store)->Change(change)->state));
    };
    world.process->conductor.Work(false);  // it does not lead
    EXPECT_EQ(state(1), "waiting");
    world.process->Hear();
    world.process->conductor.Work(true);
    std::erase_if(world.fleet.results, [](auto const &result) { return result.first == "c"; });  // it is lost
    world.Pass(620);
    EXPECT_EQ(state(1) + ' ' + state(2) + ' ' + state(3), "done silent done");
    // What no device of ours can have said changes nothing.
    std::string const id = world.process->store.Id();
    for (auto const &[device, result] : std::vector<std::pair<std::string, std::string>>{
             {"b", R"({"id":")" + id + R"(-1","state":"failed"})"},  // another one's
             {"a", R"({"id":")" + id + R"(-1","state":"trial"})"},   // it is done
             {"a", R"({"id":")" + id + R"(-99","state":"done"})"},
             {"a", R"({"id":"0-1","state":"failed"})"}})
        world.process->conductor.TakeResult(device, result);
    for (std::string const &rubbish :
         {R"({"id":")" + id + R"(-1"})", R"({"id":")" + id + R"(-1","state":"waiting"})", std::string("[]")})
        EXPECT_THROW(world.process->conductor.TakeResult("a", rubbish), Malformed) << rubbish;
    world.Pass(1);
    EXPECT_EQ(state(1) + ' ' + state(2), "done silent");
}

TEST(Conductor, DropsWhatHasEndedLongAgo) {
    World world({{"a", Kind::Done}, {"b", Kind::Done}});
    world.Pass(2);
    Begin(world, Rollout("new", 3, 60));
    world.Do([](Conductor &conductor) { conductor.Change("anna", "a", {{"net/hostname", "x"}}, "", false); });
    world.Pass(30);
    world.fleet.now += (keep - 1) * day;
    world.Do([](Conductor &conductor) {
        conductor.Pause(conductor.RollOut(Rollout("newer", 3, 60), {}), "anna");
    });
    auto const left = [&] {
        Store::Reading const reading(world.process->store);
        return std::to_string(reading->CountRollouts()) + ' ' + std::to_string(reading->CountChanges("", 0)) +
               ' ' + std::to_string(reading->Log(1).size()) + ' ' +
               std::to_string(reading->Members(2, {}, 0, -1).size());
    };
    world.Pass(2);
    EXPECT_EQ(left(), "2 3 2 2");
    for (int days : {2, 2 * keep}) {  // what is paused stays
        world.fleet.now += days * day;
        world.Pass(2);
        EXPECT_EQ(left(), "1 0 0 2");
    }
}

}  // namespace

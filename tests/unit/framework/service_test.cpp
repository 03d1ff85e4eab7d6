#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <vector>

#include "running_service.h"
#include "service/mount_table.h"
#include "tests/unit/framework/failure.h"

namespace {

using cppcms::json::value;

class CommandLine : public testing::Test {
  protected:
    void SetUp() override {
        std::ofstream(file_) << "{ \"a\": { \"b\": 1, \"c\": \"x\" }, // note\n \"d\": true }";
    }
    void TearDown() override {
        std::filesystem::remove(file_);
        unsetenv("CPPCMS_CONFIG");
    }

    static value Load(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "program");
        std::vector<char *> pointers;
        pointers.reserve(arguments.size() + 1);
        for (auto &argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        return cppcms::service::load_settings(static_cast<int>(arguments.size()), pointers.data());
    }
    static std::string Problem(std::vector<std::string> const &arguments) {
        return failure([&] { Load(arguments); });
    }

    std::string const file_ =
        std::filesystem::path(testing::TempDir()) / ("settings-" + std::to_string(getpid()) + ".json");
};

TEST_F(CommandLine, GivesSettings) {
    std::pair<std::vector<std::string>, char const *> const cases[] = {
        {{"-c", file_}, R"({"a":{"b":1,"c":"x"},"d":true})"},
        {{"-c", file_, "--a-b=2", "--d-e_f=no"}, R"({"a":{"b":2,"c":"x"},"d":{"e_f":"no"}})"},
        {{"--d=1", "-c", file_}, R"({"a":{"b":1,"c":"x"},"d":1})"},
        {{"word", "--a=", "--b=07", "--c=-1.5e2", "--d=1x", "-x"}, R"({"a":"","b":7,"c":-150,"d":"1x"})"},
        {{"--a=true", "--b=false", "--c=null", "--d=[1,{}]", "--e=a=b"},
         R"({"a":true,"b":false,"c":null,"d":[1,{}],"e":"a=b"})"},
        {{"--a=1", "-U", "--b=2", "-c"}, R"({"a":1})"},
    };
    for (auto const &[arguments, settings] : cases)
        EXPECT_EQ(Load(arguments).save(), settings);
    setenv("CPPCMS_CONFIG", file_.c_str(), 1);
    EXPECT_EQ(Load({"--d=0"}).save(), R"({"a":{"b":1,"c":"x"},"d":0})");
}

TEST_F(CommandLine, NamesItsProblems) {
    EXPECT_EQ(Problem({}), "No configuration defined");
    EXPECT_EQ(Problem({"-c", "/none"}), "Failed to open filename:/none");
    EXPECT_EQ(Problem({"--a--b=1"}), "Invalid switch: --a--b=1");
    EXPECT_EQ(Problem({"--a={"}), "Invadid json expresson: {");
    std::ofstream(file_) << "{\n\"a\" 1}";
    EXPECT_EQ(Problem({"-c", file_}), "Error reading configuration file " + file_ + " in line:2");
}

TEST(Service, RefusesContradictorySettings) {
    struct {
        std::initializer_list<std::pair<char const *, value>> settings;
        char const *problem;
    } const cases[] = {
        {{{"service.api", "gopher"}}, "Unknown api: gopher"},
        {{{"service.api", "fastcgi"}, {"service.socket", "/tmp/x"}, {"service.port", 1}},
         "Can't define both UNIX socket and TCP port/ip"},
    };
    for (auto const &c : cases) {
        value settings;
        for (auto const &[path, v] : c.settings)
            settings.set(path, v);
        cppcms::service service(settings);
        EXPECT_EQ(failure([&] { service.run(); }), c.problem);
    }
}

TEST(Service, SaysThatItsAddressIsTaken) {
    int const port = FreePort();
    RunningService const first(HttpSettings(port));
    cppcms::service second(HttpSettings(port));
    EXPECT_EQ(failure([&] { second.run(); }), "Address already in use");
}

TEST(Service, RunsWithoutFrontsAndDoesWhatIsPosted) {
    value settings;
    settings.set("logging.stderr", false);
    cppcms::service service(settings);
    std::vector<int> order;
    service.after_fork([&] { order.push_back(0); });
    service.post([&] { order.push_back(1); });
    service.post([&] {
        order.push_back(2);
        service.shutdown();
    });
    service.run();
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
}

TEST(Service, FindsMountsInTheirOrder) {
    value settings;
    settings.set("logging.stderr", false);
    cppcms::service service(settings);
    Counters counters;
    auto &pool = service.applications_pool();
    booster::intrusive_ptr<cppcms::application> status(new Status(service, &counters));
    pool.mount(status, cppcms::mount_point("/a(.*)", 1));
    auto &table = pool.table();
    auto const url = [&](std::string const &path) {
        auto const found = table.find("", "", path);
        return found ? (found->source->is_asynchronous() ? "async " : "sync ") + found->url : "none";
    };
    EXPECT_EQ(url("/axy"), "async xy");
    pool.mount(cppcms::applications_factory<Pages>(), cppcms::mount_point("/a(b.*)?", 1));
    EXPECT_EQ(url("/abc"), "sync bc") << "whatever the order";
    EXPECT_EQ(url("/a"), "sync ") << "a group without a match";
    EXPECT_EQ(url("/ac"), "async c");
    EXPECT_EQ(url("x/a"), "none") << "the whole path";
    status = nullptr;
    EXPECT_EQ(url("/ac"), "none") << "the mount ends with its application";
}

}  // namespace

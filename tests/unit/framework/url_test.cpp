#include <booster/log.h>
#include <cppcms/application.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "tests/unit/framework/failure.h"
#include "tests/unit/util/LogCapture.h"

namespace {

cppcms::json::value Settings(bool throws) {
    cppcms::json::value settings;
    settings["misc"]["invalid_url_throws"] = throws;
    settings["logging"]["stderr"] = false;
    return settings;
}

/// Records what its dispatcher calls, and what it is called with where it is attached.
class Recorder : public cppcms::application {
  public:
    using application::application;

    void Handler() { calls += "handler "; }
    void One(std::string text) { calls += "one(" + text + ") "; }
    void Two(std::string a, std::string b) { calls += "two(" + a + ',' + b + ") "; }
    void Throwing() { throw std::runtime_error("handler failed"); }
    void main(std::string url) override { calls += "[" + url + "] "; }
    void init() override { calls += "init "; }
    void clear() override { calls += "clear "; }

    std::string calls;
};

/// The URL, or the error.
std::string Mapped(cppcms::application &app, std::string const &key) {
    std::ostringstream out;
    auto const error = failure([&] { app.mapper().map(out, key); });
    return error == "nothing thrown" ? out.str() : error;
}

class UrlTest : public testing::Test {
  protected:
    cppcms::service service{Settings(true)};
};

TEST_F(UrlTest, FirstRuleThatMatchesTheWholeUrlWins) {
    Recorder app(service);
    app.dispatcher().assign("/?", &Recorder::Handler, &app);
    app.dispatcher().assign("/(a|ab)(c)?", &Recorder::Two, &app, 1, 2);
    app.dispatcher().assign("/a.*", &Recorder::One, &app, 0);
    app.dispatcher().assign("", &Recorder::Handler, &app);

    std::pair<char const *, char const *> const cases[] = {
        {"", "init handler clear "},
        {"/", "init handler clear "},
        {"//", ""},
        {"/ab", "init two(ab,) clear "},
        {"/ac", "init two(a,c) clear "},
        {"/abcd", "init one(/abcd) clear "},
        {"x/a", ""},
        {"/a\n", ""},
    };
    for (auto const &[url, calls] : cases) {
        EXPECT_EQ(app.dispatcher().dispatch(url), *calls != '\0') << url;
        EXPECT_EQ(std::exchange(app.calls, ""), calls) << url;
    }
    app.dispatcher().assign("x", &Recorder::Throwing, &app);
    EXPECT_THROW(app.dispatcher().dispatch("x"), std::runtime_error);
    EXPECT_EQ(app.calls, "init clear ");
}

TEST_F(UrlTest, KeysAreLookedUpFromTheTopFromHereAndFromTheParent) {
    cppcms::application root(service);
    root.mapper().root("/config");
    auto *settings = new cppcms::application(service);
    auto *network = new cppcms::application(service);
    root.attach(settings, "settings", "/settings{1}");
    root.attach(network, "network", "/network{1}");
    settings->mapper().assign("");
    settings->mapper().assign("general", "/general");
    settings->mapper().assign("about", "/about");
    settings->mapper().assign("about", "/about/{2}/{1}");
    settings->mapper().assign("one", "/one/{1}");
    network->mapper().assign("general", "/general");

    std::tuple<cppcms::application *, char const *, char const *> const cases[] = {
        {&root, "/settings/general", "/config/settings/general"},
        {settings, "/settings/general", "/config/settings/general"},
        {settings, "./general", "/config/settings/general"},
        {&root, "/settings/", "/config/settings"},
        {settings, "", "/config/settings"},
        {settings, "../network/general", "/config/network/general"},
        {&root, "", "url_mapper: key `' not found for url `/'"},
        {&root, "..", "url_mapper: no parent found"},
        {&root, "/nokey", "url_mapper: key `nokey' not found for url `/nokey'"},
        {&root, "/nochild/x", "url_mapper: key `nochild' not found for url `/nochild/x'"},
        {&root, "/settings/one", "url_mapper: invalid number of parameters for onein url `/settings/one'"},
    };
    for (auto const &[app, key, url] : cases)
        EXPECT_EQ(Mapped(*app, key), url) << key;

    std::ostringstream out;
    root.mapper().map(out, "/settings/about", "a b", 7);
    EXPECT_EQ(out.str(), "/config/settings/about/7/a b");

    root.mapper().root("/now");
    EXPECT_EQ(Mapped(root, "/settings/general"), "/now/settings/general");
    settings->mapper().assign("general", "/{where}");
    EXPECT_EQ(Mapped(root, "/settings/general"), "/now/settings/");
    network->mapper().set_value("where", "here");
    EXPECT_EQ(Mapped(root, "/settings/general"), "/now/settings/here");
    root.mapper().clear_value("where");
    EXPECT_EQ(Mapped(root, "/settings/general"), "/now/settings/");
}

TEST(UrlErrorTest, FailedMappingIsLoggedAndGivesTheInvalidUrl) {
    cppcms::service service(Settings(false));
    LogCapture log(booster::log::error, "cppcms");
    cppcms::application app(service);
    EXPECT_EQ(Mapped(app, "/nokey"), "/this_is_an_invalid_url_generated_by_url_mapper");
    EXPECT_TRUE(log.Contains("error: url_mapper: key `nokey' not found"));
}

}  // namespace

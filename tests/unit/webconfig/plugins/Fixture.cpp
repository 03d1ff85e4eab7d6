// A plug-in that tells the test program what happens to it. NAME is its name; with PLUGIN_THROWS it fails in
// every operation, with PLUGIN_FACTORY_THROWS already when it is made, with PLUGIN_NO_FACTORY it is none.

#include <cppcms/views_pool.h>

#include <stdexcept>
#include <string>

#include "WebApps/webconfig/data/Menu.h"
#include "WebApps/webconfig/plugin.h"

extern "C" void PluginEvent(char const *text);

namespace {

void Tell(std::string const &event) {
    PluginEvent((NAME " " + event).c_str());
#ifdef PLUGIN_THROWS
    throw std::runtime_error(event + " failed");
#endif
}

/// As compiled templates register themselves.
struct Skin {
    Skin() {
        views.name(NAME);
        cppcms::views::pool::instance().add(views);
    }
    ~Skin() { cppcms::views::pool::instance().remove(views); }
    cppcms::views::generator views;
} skin;

class Fixture : public webconfig::Plugin {
  public:
    void PopulateMenuStart(std::vector<webconfig::data::Menu> &menus) override {
        Tell("menu start");
        menus.emplace_back(NAME " start");
    }
    void PopulateMenuEnd(std::vector<webconfig::data::Menu> &menus) override {
        Tell("menu end");
        menus.emplace_back(NAME " end");
    }
    void AttachSynchronousApps(cppcms::application &, cppcms::service &) override { Tell("sync"); }
    void AttachAsynchronousApps(cppcms::application &, cppcms::service &) override { Tell("async"); }
    void Reserved() override { Tell("reserved"); }
    void Release() override { Tell("release"); }
};

}  // namespace

#ifndef PLUGIN_NO_FACTORY
webconfig::Plugin *create_webconfig_plugin() {
    static Fixture fixture;  // outlives a manager that forgets it
#ifdef PLUGIN_FACTORY_THROWS
    throw std::runtime_error("factory failed");
#endif
    PluginEvent(NAME " created");
    return &fixture;
}
#endif

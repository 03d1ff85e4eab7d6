#include "WebApps/webconfig/plugin.h"

#include <cppcms/application.h>

#include <memory>

#include "Page.h"
#include "Status.h"
#include "WebApps/webconfig/data/Menu.h"

namespace traffic_plugin {

namespace {

class Plugin final : public webconfig::Plugin {
  public:
    void PopulateMenuStart(std::vector<webconfig::data::Menu> &) override {}

    void PopulateMenuEnd(std::vector<webconfig::data::Menu> &menus) override {
        webconfig::data::Menu menu("Traffic");
        menu << webconfig::data::Menu("Interfaces", "/traffic/interfaces");
        menus.push_back(menu);
    }

    void AttachSynchronousApps(cppcms::application &root, cppcms::service &service) override {
        auto page = std::make_unique<Page>(service);
        root.attach(page.release(), "traffic", "/traffic{1}", "/traffic(/.*)?", 1);
    }

    void AttachAsynchronousApps(cppcms::application &root, cppcms::service &service) override {
        auto status = std::make_unique<Status>(service);
        root.attach(status.release(), "/traffic", 0);
    }

    void Reserved() override {}
    void Release() override { delete this; }
};

}  // namespace

}  // namespace traffic_plugin

webconfig::Plugin *create_webconfig_plugin() {
    return new traffic_plugin::Plugin;
}

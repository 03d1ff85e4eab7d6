#include "WebApps/webconfig/data/Menu.h"

#include <cppcms/application.h>
#include <cppcms/filters.h>

#include <algorithm>
#include <utility>

#include "WebApps/webconfig/util/Log.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::data {

namespace {

constexpr char logTag[] = "WebApps/webconfig/data/Menu";

std::vector<Menu> configuredMenus;

}  // namespace

Menu::Menu(std::string text, std::string path, std::string parameter)
    : _text(std::move(text)), _path(std::move(path)), _parameter(std::move(parameter)) {}

std::string Menu::GetShownText() const {
    return util::Translate(_text);
}

void Menu::SetText(std::string text) {
    _text = std::move(text);
}

void Menu::SetPath(std::string path) {
    _path = std::move(path);
}

void Menu::SetParameter(std::string parameter) {
    _parameter = std::move(parameter);
}

Menu &Menu::operator<<(Menu const &child) {
    if (&child == this)
        WEBCONFIG_LOG(error, logTag) << "Cannot add menu to itself!";
    else
        _children.push_back(child);
    return *this;
}

std::string Menu::Id() const {
    std::string id = _text;
    std::replace(id.begin(), id.end(), ' ', '_');
    return id;
}

std::string Menu::Url(cppcms::application &app) const {
    if (_path.empty())
        return {};
    return _parameter.empty() ? app.url(_path) : app.url(_path, _parameter);
}

std::vector<Menu> ReadMenus(cppcms::json::value const &value) {
    std::vector<Menu> menus;
    if (value.is_undefined())
        return menus;
    for (auto const &entry : value.array()) {
        auto const &path = entry.find("path");
        Menu &menu =
            menus.emplace_back(entry.get<std::string>("text"), path.is_undefined() ? "" : path.str());
        menu.GetChildren() = ReadMenus(entry.find("children"));
    }
    return menus;
}

void ConfigureMenus(cppcms::json::value const &value) {
    configuredMenus = ReadMenus(value);
}

std::vector<Menu> const &ConfiguredMenus() {
    return configuredMenus;
}

}  // namespace webconfig::data

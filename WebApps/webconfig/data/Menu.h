#pragma once

#include <cppcms/json.h>

#include <string>
#include <vector>

namespace cppcms {
class application;
}

namespace webconfig::data {

/// A node of the side menu: a label, the URL-mapper path that it leads to, and its sub-menu. Copies are
/// deep.
class Menu {
  public:
    /// \a path is a mapper path such as "/settings/reboot", empty for a heading without a link;
    /// \a parameter is the path's one mapper parameter, empty for none.
    explicit Menu(std::string text, std::string path = {}, std::string parameter = {});
    Menu(Menu const &) = default;
    Menu(Menu &&) = default;
    Menu &operator=(Menu const &) = default;
    Menu &operator=(Menu &&) = default;
    virtual ~Menu() = default;

    std::string const &GetText() const { return _text; }
    /// The text in the language of the page.
    std::string GetShownText() const;
    void SetText(std::string text);
    std::string const &GetPath() const { return _path; }
    void SetPath(std::string path);
    std::string const &GetParameter() const { return _parameter; }
    void SetParameter(std::string parameter);
    std::vector<Menu> const &GetChildren() const { return _children; }
    std::vector<Menu> &GetChildren() { return _children; }

    /// Appends a copy of \a child. A menu cannot be appended to itself: that is logged and changes nothing.
    Menu &operator<<(Menu const &child);

    /// The text with underscores for spaces, for element ids.
    std::string Id() const;
    /// The link of this entry, empty without a path.
    std::string Url(cppcms::application &app) const;

  private:
    std::string _text;
    std::string _path;
    std::string _parameter;
    std::vector<Menu> _children;
};

/// Menus out of a configuration: an array of objects with a "text", a "path" and the "children", each of
/// which but the text may be absent. None where \a value is undefined. Throws cppcms::json::bad_value_cast
/// where something has the wrong type.
std::vector<Menu> ReadMenus(cppcms::json::value const &value);

/// Keeps the menus out of a configuration for all pages, as ReadMenus() reads them. Not while requests are
/// served.
void ConfigureMenus(cppcms::json::value const &value);
std::vector<Menu> const &ConfiguredMenus();

}  // namespace webconfig::data

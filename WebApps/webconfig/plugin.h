#pragma once

/// What a plug-in shares with the process that loads it. docs/plugins.md tells how to make one.
///
/// The binary interface is that of the C++ classes named in the installed headers, so a plug-in is built
/// with the compiler, the standard (C++20) and the headers of the build that it is for. Whatever changes a
/// layout or a virtual function there raises the number in the names below: then a plug-in of another
/// number refers to a function that the process does not have, and is refused when it is loaded.

#include <vector>

namespace cppcms {
class application;
class service;
}  // namespace cppcms

namespace webconfig::data {
class Menu;
}

/// Does nothing. That the process has it says that both sides have the same interface.
extern "C" void webconfig_plugin_abi_4();

namespace webconfig {

/// A plug-in as the process sees it. The order of the virtual functions is part of the interface; a plug-in
/// derives from this class and adds none before them. An exception out of any of them is logged and costs
/// the plug-in that one call only.
class Plugin {
  public:
    /// Puts menus in front of the built-in ones, or after them. Called while a page is prepared, by several
    /// threads at once.
    virtual void PopulateMenuStart(std::vector<data::Menu> &menus) = 0;
    virtual void PopulateMenuEnd(std::vector<data::Menu> &menus) = 0;

    /// Attaches page applications to \a root, a root of the page space. The service makes such roots when
    /// it needs them, one for each page that is served at the same time: this is called for each of them, by
    /// several threads at once, and must attach a new application every time.
    virtual void AttachSynchronousApps(cppcms::application &root, cppcms::service &service) = 0;
    /// Attaches status applications to \a root, the one root of the status space. Called once in a life of
    /// the service, before it serves. Requests there are handled one after the other on one thread.
    virtual void AttachAsynchronousApps(cppcms::application &root, cppcms::service &service) = 0;

    /// Not called. It keeps the place of the next function that the interface will need; do nothing here.
    virtual void Reserved() = 0;

    /// Ends the plug-in: deletes the object. The library is unloaded right afterwards, so nothing of it may
    /// run or be referred to then: no thread, no log sink, no object in a place that others keep.
    virtual void Release() = 0;

  protected:
    Plugin() { webconfig_plugin_abi_4(); }
    Plugin(Plugin const &) = default;
    Plugin &operator=(Plugin const &) = default;
    // Not virtual: a virtual one would take places in the order above.
    ~Plugin() = default;
};

}  // namespace webconfig

/// The entry point that each plug-in defines: makes its object. The process calls it once for each time that
/// it loads the plug-in, and gives the object back with Release().
extern "C" webconfig::Plugin *create_webconfig_plugin();

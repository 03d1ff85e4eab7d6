#pragma once

#include <cppcms/application.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

#include <string>

namespace webconfig::apps {

/// A page of an application: all that its address, its link and its menu entry need.
template <typename Application>
struct Page {
    char const *name;                ///< the address below the application's, and the name for links
    void (Application::*handler)();  ///< answers what is asked of it
    char const *menu = nullptr;      ///< its entry in the application's menu, if it has one
    bool (*offered)() = nullptr;     ///< whether the configuration asks for it; null: always

    bool IsOffered() const { return !offered || offered(); }
};

/// Registers the pages of \a application in their order.
template <typename Application, std::size_t Size>
void AddPages(Application &application, Page<Application> const (&pages)[Size]) {
    for (auto const &page : pages) {
        if (!page.IsOffered())
            continue;
        std::string const path = std::string("/") + page.name;
        application.mapper().assign(page.name, path);
        application.dispatcher().assign(path, page.handler, &application);
    }
}

}  // namespace webconfig::apps

#include "fleet/console/Filter.h"

#include <algorithm>
#include <iterator>

namespace fleet::console {

namespace {

namespace json = cppcms::json;

constexpr std::size_t usualLimit = 50;
constexpr std::size_t mostLimit = 200;

// By Sort.
constexpr char const *sorts[] = {"id", "name", "model", "firmware", "online", "seen"};

template <typename T>
void Read(json::value const &asked, char const *member, T &value) {
    if (json::value const &found = asked.find(member); !found.is_undefined() && !found.is_null())
        value = found.get_value<T>();
}

template <typename T>
void Read(json::value const &asked, char const *member, std::optional<T> &value) {
    if (json::value const &found = asked.find(member); !found.is_undefined() && !found.is_null())
        value = found.get_value<T>();
}

}  // namespace

Filter ReadFilter(json::value const &asked) {
    Filter filter;
    Read(asked, "search", filter.search);
    Read(asked, "online", filter.online);
    Read(asked, "firmware", filter.firmware);
    Read(asked, "model", filter.model);
    Read(asked, "tag", filter.tag);
    Read(asked, "differs.device", filter.differs_from);
    Read(asked, "differs.settings", filter.differs);
    std::optional<std::vector<std::string>> ids;
    Read(asked, "ids", ids);
    if (ids)
        filter.ids.emplace(ids->begin(), ids->end());
    return filter;
}

Window ReadWindow(json::value const &asked) {
    Window window{.limit = usualLimit};
    std::string sort = sorts[0];
    Read(asked, "sort", sort);
    auto const *const found = std::find(std::begin(sorts), std::end(sorts), sort);
    if (found == std::end(sorts))
        throw json::bad_value_cast("sort");
    window.sort = static_cast<Sort>(found - std::begin(sorts));
    Read(asked, "descending", window.descending);
    Read(asked, "offset", window.offset);
    Read(asked, "limit", window.limit);
    window.limit = std::min(window.limit, mostLimit);
    return window;
}

}  // namespace fleet::console

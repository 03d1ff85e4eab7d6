#pragma once

#include <cppcms/json.h>

#include <optional>
#include <set>
#include <string>

namespace fleet::console {

/// Which devices are meant: those for which all that is said here holds.
struct Filter {
    std::string search;  ///< a part of the id, the name, the serial number, the address or a tag, in any case
    std::optional<bool> online;
    std::optional<std::string> firmware;
    std::optional<std::string> model;
    std::optional<std::string> tag;
    std::string differs_from;      ///< a device: some setting but those that are each device's own is another
    cppcms::json::object differs;  ///< settings: one of them is another
    std::optional<std::set<std::string>> ids;
};

enum class Sort { Id, Name, Model, Firmware, Online, Seen };

/// A part of the devices, in an order.
struct Window {
    Sort sort = Sort::Id;
    bool descending = false;
    std::size_t offset = 0;
    std::size_t limit = 0;
};

/// From the members "search", "online", "firmware", "model", "tag", "differs" and "ids". Throws
/// cppcms::json::bad_value_cast.
Filter ReadFilter(cppcms::json::value const &asked);

/// The same for "sort" and "descending", "offset" and "limit".
Window ReadWindow(cppcms::json::value const &asked);

}  // namespace fleet::console

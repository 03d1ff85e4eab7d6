#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace webconfig::util {

/// What the tree of a firmware image says of it, in its root.
struct ImageTree {
    std::string version;  ///< "description"; empty where there is none
    std::vector<std::string>
        platforms;  ///< "compatible": the boards that it is for; empty where it does not say
};

/// Reads the flattened device tree that \a image begins with; \a image is aligned as a mapped file is.
/// Nothing where that is no whole tree. Only the structure and what is asked for are looked at, not the data
/// in it, so a mapped image is hardly read; and no image, whatever is in it, keeps this busy for long.
std::optional<ImageTree> ReadImageTree(std::string_view image);

}  // namespace webconfig::util

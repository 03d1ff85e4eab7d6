#pragma once

#include <string>

namespace webconfig::data {

/// A value of which a part is marked.
struct MarkedText {
    std::string head;
    std::string marked;
    std::string tail;
};

/// A setting and its change, as people read it.
struct ChangedSetting {
    std::string label;
    bool secret = false;   ///< only that it was changed is told
    bool existed = false;  ///< with a value that is not empty
    bool exists = false;
    MarkedText before;
    MarkedText after;
};

}  // namespace webconfig::data

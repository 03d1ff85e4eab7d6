#pragma once

#include <string>
#include <vector>

namespace webconfig::data {

/// Titled command outputs, shown one below the other on a status tab.
struct ShellOutput {
    struct Section {
        std::string title;
        std::string output;  // shown preformatted
    };

    std::vector<Section> sections;
};

}  // namespace webconfig::data

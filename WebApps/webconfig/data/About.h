#pragma once

#include <map>
#include <set>
#include <string>

#include "WebApps/webconfig/data/BaseTabbed.h"

namespace webconfig::data {

/// A licence notice of a package.
struct OSSFile {
    std::string name;
    std::string text;  // empty unless the file was opened

    /// By name, upper and lower case alike.
    bool operator<(OSSFile const &other) const;
};

/// The notices of each package, by the package's name.
using OSSCatalogue = std::map<std::string, std::set<OSSFile>>;

struct About : public BaseTabbed {
    OSSCatalogue packages;
};

}  // namespace webconfig::data

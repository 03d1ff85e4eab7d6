#include "WebApps/webconfig/data/About.h"

#include <strings.h>

namespace webconfig::data {

bool OSSFile::operator<(OSSFile const &other) const {
    return strcasecmp(name.c_str(), other.name.c_str()) < 0;
}

}  // namespace webconfig::data

#pragma once

#include "WebApps/webconfig/data/BaseTabbed.h"
#include "WebApps/webconfig/forms/Notice.h"

namespace webconfig::data {

/// What the view shows.
struct Notice : public BaseTabbed {
    forms::Notice form;
};

}  // namespace webconfig::data

#pragma once

#include <memory>

namespace booster {

using std::const_pointer_cast;
using std::dynamic_pointer_cast;
using std::shared_ptr;
using std::static_pointer_cast;
using std::weak_ptr;

}  // namespace booster

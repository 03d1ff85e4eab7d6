#pragma once

#include <memory>

namespace booster {

using std::enable_shared_from_this;

}  // namespace booster

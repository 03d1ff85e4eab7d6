#pragma once

#include <functional>

namespace booster {

using std::function;

}  // namespace booster

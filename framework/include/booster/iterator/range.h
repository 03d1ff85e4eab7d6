#pragma once

#include <iterator>

namespace booster {

using std::begin;
using std::end;
using std::rbegin;
using std::rend;

}  // namespace booster

#pragma once

#include <boost/locale.hpp>

namespace booster {

/// Generators, messages and formatting are Boost.Locale's own.
namespace locale = boost::locale;

}  // namespace booster

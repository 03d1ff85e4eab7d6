#pragma once

// Not all of it: the parts that are left out, text boundaries, collation and calendars, double what each
// source has to compile.
#include <boost/locale/conversion.hpp>
#include <boost/locale/encoding.hpp>
#include <boost/locale/format.hpp>
#include <boost/locale/formatting.hpp>
#include <boost/locale/generator.hpp>
#include <boost/locale/info.hpp>
#include <boost/locale/localization_backend.hpp>
#include <boost/locale/message.hpp>

namespace booster {

/// Generators, messages and formatting are Boost.Locale's own.
namespace locale = boost::locale;

}  // namespace booster

#pragma once

#include <cppcms/json.h>

namespace cppcms::impl {

/// Sets the log level and adds the sinks that the `logging` settings name. Sinks that are there already
/// stay. Throws cppcms_error and booster::invalid_argument for what is no level or facility.
void set_up_log(json::value const &settings);

}  // namespace cppcms::impl

#pragma once

#include <cppcms/json.h>

#include <ostream>

namespace webconfig {

/// Looks at all that the service needs of the device that it runs on: one line
/// each, "ok", "missing" where pages or saves would fail, or "without" where only a text of some page stays
/// empty. Returns how many are missing.
int CheckDevice(cppcms::json::value const &settings, std::ostream &out);

}  // namespace webconfig

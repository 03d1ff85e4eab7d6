#pragma once

#include <cppcms/json.h>

namespace webconfig::apps {

/// Cleans each text of \a value: what tools and daemons print may be any bytes, a JSON text must be UTF-8.
void CleanTexts(cppcms::json::value &value);

}  // namespace webconfig::apps

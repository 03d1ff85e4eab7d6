#pragma once

#include <cppcms/json.h>

#include "header_text.h"

namespace cppcms::impl {

/// The headers that "http.headers" gives every answer. An empty one takes away what would be there without
/// it.
header_map configured_headers(json::value const &settings);

}  // namespace cppcms::impl

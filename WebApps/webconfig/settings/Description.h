#pragma once

#include <cppcms/json.h>

#include "WebApps/webconfig/settings/Catalogue.h"

namespace webconfig::settings {

/// A row of the table, for machines: docs/api.md, "settings_describe".
cppcms::json::value Described(Setting const &setting);

}  // namespace webconfig::settings

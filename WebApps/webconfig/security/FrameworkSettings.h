#pragma once

#include <cppcms/json.h>

namespace webconfig::security {

struct Policy;

/// Adds to \a settings what the framework does of the \a policy, before any application sees a request, for
/// all of them and for what none of them serves.
void SetUpFramework(cppcms::json::value &settings, Policy const &policy);

}  // namespace webconfig::security

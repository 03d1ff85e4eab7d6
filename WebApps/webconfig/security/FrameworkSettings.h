#pragma once

#include <cppcms/json.h>

#include <string>

namespace webconfig::security {

struct Policy;

/// Adds to \a settings what the framework does of the \a policy, before any application sees a request, for
/// all of them and for what none of them serves. Below \a calls, a path, any request may change something.
void SetUpFramework(cppcms::json::value &settings, Policy const &policy, std::string const &calls);

}  // namespace webconfig::security

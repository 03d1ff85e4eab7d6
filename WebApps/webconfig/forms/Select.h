#pragma once

#include <cppcms/form.h>

#include <string>

namespace webconfig::forms {

/// Selects the option whose id is \a id, or none where there is no such option: a stored value that the
/// form does not offer must not break its page.
void SelectByValue(cppcms::widgets::select_base &select, std::string const &id);

}  // namespace webconfig::forms

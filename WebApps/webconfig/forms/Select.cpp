#include "WebApps/webconfig/forms/Select.h"

#include <cppcms/cppcms_error.h>

namespace webconfig::forms {

void SelectByValue(cppcms::widgets::select_base &select, std::string const &id) {
    try {
        select.selected_id(id);
    } catch (cppcms::cppcms_error const &) {
        select.selected(-1);
    }
}

}  // namespace webconfig::forms

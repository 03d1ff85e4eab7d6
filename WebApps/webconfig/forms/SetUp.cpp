#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

void SetUp(cppcms::widgets::base_widget &widget, std::string const &name, std::string const &id,
           std::string const &label) {
    widget.name(name);
    SetUp(widget, id, label);
}

void SetUp(cppcms::widgets::base_widget &widget, std::string const &id, std::string const &label) {
    widget.id(id);
    widget.message(label);
}

void SetUpSubmit(cppcms::widgets::submit &button, std::string const &name, std::string const &id,
                 std::string const &caption) {
    button.name(name);
    button.id(id);
    button.value(caption);
}

}  // namespace webconfig::forms

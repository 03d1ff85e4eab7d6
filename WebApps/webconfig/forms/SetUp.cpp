#include "WebApps/webconfig/forms/SetUp.h"

namespace webconfig::forms {

void SetUp(cppcms::widgets::base_widget &widget, std::string const &name, std::string const &id) {
    widget.name(name);
    widget.id(id);
}

void SetUp(cppcms::widgets::base_widget &widget, std::string const &name, std::string const &id,
           std::string const &label) {
    SetUp(widget, name, id);
    widget.message(label);
}

void SetUpSubmit(widgets::Button &button, std::string const &name, std::string const &id,
                 std::string const &caption, std::string const &label) {
    SetUp(button, name, id);
    button.value(caption);
    if (!label.empty())
        button.message(label);
}

}  // namespace webconfig::forms

#pragma once

#include <cppcms/form.h>

#include <string>

namespace webconfig::forms {

/// Gives a widget its names and the label in front of it.
void SetUp(cppcms::widgets::base_widget &widget, std::string const &name, std::string const &id,
           std::string const &label);

/// The same without a name: the widget takes the one of its place in the form.
void SetUp(cppcms::widgets::base_widget &widget, std::string const &id, std::string const &label);

/// Gives a button its names and its caption.
void SetUpSubmit(cppcms::widgets::submit &button, std::string const &name, std::string const &id,
                 std::string const &caption);

}  // namespace webconfig::forms

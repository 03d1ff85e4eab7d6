#pragma once

#include <cppcms/form.h>

#include <string>

#include "WebApps/webconfig/widgets/Button.h"

namespace webconfig::forms {

/// In the place of a name: the widget takes the one of its place in the form.
inline constexpr char noName[] = "";
inline constexpr char noId[] = "";

/// Gives a widget its names.
void SetUp(cppcms::widgets::base_widget &widget, std::string const &name, std::string const &id);

/// Gives a widget its names and the label in front of it: in English, shown in the language of the page.
void SetUp(cppcms::widgets::base_widget &widget, std::string const &name, std::string const &id,
           std::string const &label);

/// Gives a button its names, its caption and the label in front of it, where it has one, both in English.
void SetUpSubmit(widgets::Button &button, std::string const &name, std::string const &id,
                 std::string const &caption, std::string const &label = {});

}  // namespace webconfig::forms

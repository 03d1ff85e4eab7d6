#pragma once

#include <cppcms/form.h>

#include <string>

#include "WebApps/webconfig/settings/Catalogue.h"

/// Rules that a form sets on its widgets, each with its error message. A widget has one message: a later
/// rule replaces that of an earlier one.
namespace webconfig::util::validation {

/// The style class of refused inputs, and of the reasons beside them.
inline constexpr char errorClass[] = "cppcms_error_msg";

/// Makes a text, select or numeric widget, or an address, required.
template <typename Widget>
void NonEmpty(Widget &widget) {
    widget.non_empty();
    widget.error_message("This field is required");
}

/// Limits a text to \a min to \a max characters.
void Length(cppcms::widgets::text &widget, unsigned min, unsigned max);

/// Limits a file to \a min to \a max bytes, and makes it required.
void Length(cppcms::widgets::file &widget, unsigned min, unsigned max);

/// Limits a text to at least \a min characters.
void MinLength(cppcms::widgets::text &widget, unsigned min);

/// Gives a text, an integer or a select the limits of its setting in the table; a select its choices, too.
void Limit(cppcms::widgets::text &widget, settings::Setting const &setting);
void Limit(cppcms::widgets::numeric<int> &widget, settings::Setting const &setting);
void Limit(cppcms::widgets::select &widget, settings::Setting const &setting);

/// Whether a text that was validated is a name with as many bytes as its setting takes; marks it where it is
/// not.
bool IsName(cppcms::widgets::text &widget, settings::Setting const &setting);

/// Marks a widget that was validated, for a reason that only its form or its page knows.
void Refuse(cppcms::widgets::base_widget &widget, std::string const &reason);

/// Adds a style class to the widget's attribute string. An attribute string without a class attribute is
/// replaced: its other attributes are dropped, on purpose.
void AddClass(cppcms::widgets::base_widget &widget, std::string const &cssClass);

}  // namespace webconfig::util::validation

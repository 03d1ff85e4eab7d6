#pragma once

#include <cppcms/form.h>

namespace webconfig::forms {

/// An attribute with style or script that some widgets are described with. Where answers forbid browsers to
/// heed such ones, a style class of our style sheet takes its place; or nothing: the page's script does the
/// same.
struct InlineAttribute {
    char const *text;
    char const *cssClass;
};

// Grounds are the style sheet's matter: it gives all read-only inputs the same one.
inline constexpr InlineAttribute greyGround{"style='background-color:#DCDCDC;'", ""};
inline constexpr InlineAttribute lightGround{"style='background-color:#F5F5F5;'", ""};
inline constexpr InlineAttribute largeText{"style='font-size: 1.2em;'", "large_text"};
inline constexpr InlineAttribute boldText{"style='font-weight: bold;'", "bold_text"};
inline constexpr InlineAttribute redBorder{"style='border-color:red'", "red_border"};
inline constexpr InlineAttribute onSecurityChange{"onchange=\"wlanSecurityChange()\"", ""};
inline constexpr InlineAttribute onCountryChange{"onchange=\"apCountryCodeChange(this)\"", ""};

/// Replaces the attribute string of \a widget.
void SetInlineAttribute(cppcms::widgets::base_widget &widget, InlineAttribute const &attribute);

}  // namespace webconfig::forms

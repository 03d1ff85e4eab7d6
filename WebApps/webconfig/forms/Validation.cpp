#include "WebApps/webconfig/forms/Validation.h"

#include <booster/regex.h>

namespace webconfig::util::validation {

void Length(cppcms::widgets::text &widget, unsigned min, unsigned max) {
    widget.limits(static_cast<int>(min), static_cast<int>(max));
    widget.error_message("Invalid length; minimum " + std::to_string(min) + ", maximum " +
                         std::to_string(max));
}

void Length(cppcms::widgets::file &widget, unsigned min, unsigned max) {
    widget.limits(static_cast<int>(min), static_cast<int>(max));
    widget.non_empty();
    widget.error_message("Invalid file length; minimum " + std::to_string(min) + ", maximum " +
                         std::to_string(max) + " bytes.");
}

void MinLength(cppcms::widgets::text &widget, unsigned min) {
    constexpr int unlimited = -1;
    widget.limits(static_cast<int>(min), unlimited);
    widget.error_message("Invalid length; minimum " + std::to_string(min));
}

bool IsSsid(cppcms::widgets::text &widget) {
    constexpr std::size_t max = 32;
    std::size_t const length = widget.value().size();
    if (length >= 1 && length <= max)
        return widget.valid();
    Refuse(widget, "Invalid length; minimum 1, maximum " + std::to_string(max));
    return false;
}

void Refuse(cppcms::widgets::base_widget &widget, std::string const &reason) {
    widget.valid(false);
    widget.error_message(reason);
    AddClass(widget, errorClass);
}

void AddClass(cppcms::widgets::base_widget &widget, std::string const &cssClass) {
    if (cssClass.empty())
        return;
    static booster::regex const classAttribute(".*class=['\"](.*)['\"].*");
    std::string attributes = widget.attributes_string();
    booster::smatch match;
    if (booster::regex_match(attributes, match, classAttribute))
        attributes.replace(match[1].first, match[1].second, match[1].str() + ' ' + cssClass);
    else
        attributes = "class='" + cssClass + '\'';
    widget.attributes_string(attributes);
}

}  // namespace webconfig::util::validation

#include "WebApps/webconfig/forms/Validation.h"

#include <booster/regex.h>

#include <utility>

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

void Limit(cppcms::widgets::text &widget, settings::Setting const &setting) {
    auto const least = static_cast<unsigned>(setting.limits.least);
    if (setting.limits.most > 0)
        Length(widget, least, static_cast<unsigned>(setting.limits.most));
    else if (least == 1)
        NonEmpty(widget);
    else if (least > 1)
        MinLength(widget, least);
}

void Limit(cppcms::widgets::numeric<int> &widget, settings::Setting const &setting) {
    auto const [least, most] = std::pair(setting.limits.least, setting.limits.most);
    widget.range(static_cast<int>(least), static_cast<int>(most));
    // With two blanks: translations are found by the whole text.
    widget.error_message("Invalid range;  minimum " + std::to_string(least) + ", maximum " +
                         std::to_string(most));
}

void Limit(cppcms::widgets::select &widget, settings::Setting const &setting) {
    for (auto const &choice : setting.limits.choices)
        widget.add(choice.label, choice.value);
    if (setting.limits.least > 0)
        NonEmpty(widget);
}

bool IsName(cppcms::widgets::text &widget, settings::Setting const &setting) {
    auto const [least, most] = std::pair(setting.limits.least, setting.limits.most);
    auto const length = static_cast<long>(widget.value().size());
    if (length >= least && length <= most)
        return widget.valid();
    Refuse(widget, "Invalid length; minimum " + std::to_string(least) + ", maximum " + std::to_string(most));
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

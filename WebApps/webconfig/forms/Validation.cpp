#include "WebApps/webconfig/forms/Validation.h"

#include <booster/regex.h>

#include <utility>

#include "WebApps/webconfig/settings/Languages.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util::validation {

void Length(cppcms::widgets::text &widget, unsigned min, unsigned max) {
    widget.limits(static_cast<int>(min), static_cast<int>(max));
    widget.error_message(util::Translate("Invalid length; minimum {1}, maximum {2}", min, max));
}

void Length(cppcms::widgets::file &widget, unsigned min, unsigned max) {
    widget.limits(static_cast<int>(min), static_cast<int>(max));
    widget.non_empty();
    widget.error_message(util::Translate("Invalid file length; minimum {1}, maximum {2} bytes.", min, max));
}

void MinLength(cppcms::widgets::text &widget, unsigned min) {
    constexpr int unlimited = -1;
    widget.limits(static_cast<int>(min), unlimited);
    widget.error_message(util::Translate("Invalid length; minimum {1}", min));
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
    widget.error_message(util::Translate("Invalid range;  minimum {1}, maximum {2}", least, most));
}

void Limit(cppcms::widgets::select &widget, settings::Setting const &setting) {
    for (auto const &choice : settings::ChoicesOf(setting))
        widget.add(util::Translate(choice.label), choice.value);
    if (setting.limits.least > 0)
        NonEmpty(widget);
}

bool IsName(cppcms::widgets::text &widget, settings::Setting const &setting) {
    auto const [least, most] = std::pair(setting.limits.least, setting.limits.most);
    auto const length = static_cast<long>(widget.value().size());
    if (length >= least && length <= most)
        return widget.valid();
    Refuse(widget, util::Translate("Invalid length; minimum {1}, maximum {2}", least, most));
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

#pragma once

#include <cppcms/json.h>

#include <span>
#include <string>

#include "WebApps/webconfig/settings/Catalogue.h"

/// The languages that pages can be shown in.
namespace webconfig::settings {

/// Offers, besides English, those that a configuration lists: an array of objects with an "id", under which
/// their catalogue is found ("de", "zh_CN"), and a "name", as its speakers call it. None where \a listed is
/// undefined. Throws where something is wrong with them. Not while requests are served.
void OfferLanguages(cppcms::json::value const &listed);

/// What \a setting can be where it is a choice. The language can be English, whose value is empty, and what
/// is offered.
std::span<Choice const> ChoicesOf(Setting const &setting);

/// The setting's value; empty, too, where it is none that is offered.
std::string StoredLanguage();

}  // namespace webconfig::settings

#include "WebApps/webconfig/settings/Catalogue.h"

namespace webconfig::settings {

namespace {

/// \a label, of the setting \a key, with the part of the key that its row leaves open.
std::string WithPart(std::string label, Setting const &setting, std::string const &key) {
    std::size_t const star = setting.key.find('*');
    std::size_t const place = label.find('*');
    if (star == std::string_view::npos || place == std::string::npos)
        return label;
    std::size_t const begin = key.find_first_not_of('/') + star;
    return label.replace(place, 1, key.substr(begin, key.find('/', begin) - begin));
}

}  // namespace

std::string LabelOf(std::string const &key) {
    Setting const *const setting = Find(key);
    return setting ? WithPart(setting->label, *setting, key) : key;
}

std::string ShownLabelOf(std::string const &key) {
    Setting const *const setting = Find(key);
    return setting ? WithPart(util::Translate(setting->label), *setting, key) : key;
}

std::string Shown(std::string const &key, std::string const &value) {
    Setting const *const setting = Find(key);
    if (!setting || value.empty())
        return value;
    if (setting->kind == Kind::Secret)
        return "(secret)";
    if (setting->kind == Kind::File)
        return value.substr(value.find_last_of('/') + 1);
    return value;
}

}  // namespace webconfig::settings

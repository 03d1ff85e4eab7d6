#include "WebApps/webconfig/settings/Catalogue.h"

namespace webconfig::settings {

std::string LabelOf(std::string const &key) {
    Setting const *const setting = Find(key);
    if (!setting)
        return key;
    std::string label = setting->label;
    std::size_t const star = setting->key.find('*');
    if (star != std::string_view::npos) {
        std::size_t const begin = key.find_first_not_of('/') + star;
        std::string const part = key.substr(begin, key.find('/', begin) - begin);
        label.replace(label.find('*'), 1, part);
    }
    return label;
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

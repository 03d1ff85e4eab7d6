#include "WebApps/webconfig/settings/Languages.h"

#include <cppcms/cppcms_error.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::settings {

namespace {

constexpr char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";

struct Language {
    std::string id;
    std::string name;
};
std::vector<Language> listedLanguages;
std::vector<Choice> offered(std::begin(languages), std::end(languages));

}  // namespace

void OfferLanguages(cppcms::json::value const &listed) {
    listedLanguages.clear();
    if (!listed.is_undefined()) {
        for (auto const &entry : listed.array())
            listedLanguages.push_back({entry.get<std::string>("id"), entry.get<std::string>("name")});
    }
    offered.assign(std::begin(languages), std::end(languages));
    for (auto const &[id, name] : listedLanguages) {
        if (id.empty() || id.find_first_not_of(letters) != std::string::npos)
            throw cppcms::cppcms_error("webconfig.languages: \"" + id + "\" is no id of a language");
        offered.push_back({name.c_str(), id.c_str()});
    }
}

std::span<Choice const> ChoicesOf(Setting const &setting) {
    return setting.limits.choices.data() == languages ? std::span<Choice const>(offered)
                                                      : setting.limits.choices;
}

std::string StoredLanguage() {
    if (listedLanguages.empty())
        return {};
    std::string stored = util::Prm::GetString(Key("language"));
    bool const known = std::any_of(listedLanguages.begin(), listedLanguages.end(),
                                   [&](Language const &language) { return language.id == stored; });
    return known ? std::move(stored) : "";
}

}  // namespace webconfig::settings

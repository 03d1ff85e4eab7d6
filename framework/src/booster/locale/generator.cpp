#include <booster/locale/generator.h>
#include <booster/locale/info.h>
#include <booster/locale/message.h>
#include <booster/log.h>
#include <booster/regex.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "catalogue.h"
#include "encoding.h"

namespace booster::locale {

std::locale::id info::id;

namespace {

namespace fs = std::filesystem;

/// Names may come from a browser. Those beyond are made each time that they are asked for.
constexpr std::size_t max_made = 100;
constexpr std::uintmax_t max_catalogue = std::uintmax_t{4} * 1024 * 1024;

std::string system_locale() {
    for (char const *const variable : {"LC_CTYPE", "LC_ALL", "LANG"})
        if (char const *const value = std::getenv(variable); value && *value)
            return value;
    return "C";
}

std::string in_case(std::string text, char first, char last, int step) {
    for (char &c : text)
        if (c >= first && c <= last)
            c = static_cast<char>(c + step);
    return text;
}

std::string lower(std::string const &text) {
    return in_case(text, 'A', 'Z', 'a' - 'A');
}

std::string upper(std::string const &text) {
    return in_case(text, 'a', 'z', 'A' - 'a');
}

/// The catalogue in a file, a null pointer where there is none or a broken one.
std::unique_ptr<impl::catalogue> read(fs::path const &path, std::string const &encoding) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored))
        return nullptr;
    try {
        std::ifstream file(path, std::ios::binary);
        auto const size = fs::file_size(path);
        if (size > max_catalogue)
            throw std::runtime_error("it is too large");
        std::string content(size, '\0');
        if (!file.read(content.data(), static_cast<std::streamsize>(size)))
            throw std::runtime_error("it cannot be read");
        return std::make_unique<impl::catalogue>(std::move(content), encoding);
    } catch (std::exception const &problem) {
        BOOSTER_ERROR("cppcms") << "The catalogue " << path.string() << " is left out: " << problem.what();
        return nullptr;
    }
}

class messages : public message_format<char> {
  public:
    messages(info const &locale, std::vector<std::string> const &paths, std::vector<std::string> domains)
        : domains_(std::move(domains)) {
        std::vector<std::string> names{locale.language()};
        if (!locale.country().empty())
            names.insert(names.begin(), locale.language() + '_' + locale.country());
        for (auto const &domain : domains_)
            catalogues_.push_back(first(names, paths, domain + ".mo", locale.encoding()));
    }

    int domain(std::string const &name) const override {
        auto const found = std::find(domains_.begin(), domains_.end(), name);
        return found == domains_.end() ? -1 : static_cast<int>(found - domains_.begin());
    }

    char const *get(int domain_id, char const *context, char const *text) const override {
        auto const *const catalogue = of(domain_id);
        return catalogue ? catalogue->find(context, text) : nullptr;
    }

    char const *get(int domain_id, char const *context, char const *single, long long n) const override {
        auto const *const catalogue = of(domain_id);
        return catalogue ? catalogue->find(context, single, n) : nullptr;
    }

  private:
    static std::unique_ptr<impl::catalogue> first(std::vector<std::string> const &names,
                                                  std::vector<std::string> const &paths,
                                                  std::string const &file, std::string const &encoding) {
        for (auto const &name : names)
            for (fs::path const path : paths)
                if (auto found = read(path / name / "LC_MESSAGES" / file, encoding))
                    return found;
        return nullptr;
    }

    impl::catalogue const *of(int domain_id) const {
        auto const index = static_cast<std::size_t>(domain_id);
        return index < catalogues_.size() ? catalogues_[index].get() : nullptr;
    }

    std::vector<std::string> domains_;
    std::vector<std::unique_ptr<impl::catalogue>> catalogues_;
};

}  // namespace

info::info(std::string const &name) : name_(name.empty() ? system_locale() : name) {
    static regex const parts("([A-Za-z]+)(?:[_-]([A-Za-z]+))?(?:\\.([A-Za-z0-9_:-]+))?(?:@.*)?");
    smatch found;
    if (!regex_match(name_, found, parts))
        return;
    language_ = lower(found[1]);
    country_ = upper(found[2]);
    if (std::string const encoding = found[3]; !encoding.empty())
        encoding_ = lower(encoding);
}

bool info::utf8() const {
    return impl::is_same_encoding(encoding_, "utf-8");
}

std::locale generator::generate(std::string const &name) const {
    std::lock_guard const lock(guard_);
    if (auto const found = made_.find(name); found != made_.end())
        return found->second;
    auto const locale = make(name);
    if (made_.size() < max_made)
        made_.emplace(name, locale);
    return locale;
}

std::locale generator::make(std::string const &name) const {
    auto const *const about = new info(name);  // which the locale owns
    std::locale const locale(std::locale::classic(), about);
    return {locale, new messages(*about, paths_, domains_)};
}

}  // namespace booster::locale

#pragma once

#include <forward_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "plural_rule.h"

namespace booster::locale::impl {

/// The translations of one file, as msgfmt writes it.
class catalogue {
  public:
    /// Reads a file's content for a locale of \a encoding. Throws std::runtime_error where it is broken.
    catalogue(std::string content, std::string const &encoding);
    catalogue(catalogue const &) = delete;
    catalogue &operator=(catalogue const &) = delete;

    /// A null pointer where there is no translation; \a context may be "".
    char const *find(char const *context, char const *text) const;
    char const *find(char const *context, char const *single, long long n) const;

  private:
    std::string_view text_at(std::size_t entry) const;
    std::size_t number_at(std::size_t position) const;
    void read_head(std::string_view head, std::string const &encoding);
    std::string_view forms(char const *context, char const *text) const;

    std::string const content_;
    bool is_foreign_ = false;  // written by a machine with the other order of bytes
    std::forward_list<std::string> converted_;
    std::optional<plural_rule> rule_;
    /// By the original up to its first NUL; all forms of a translation, with a NUL behind each.
    std::unordered_map<std::string_view, std::string_view> texts_;
};

}  // namespace booster::locale::impl

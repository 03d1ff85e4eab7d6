#pragma once

#include <booster/noncopyable.h>

#include <locale>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace booster::locale {

/// Makes locales, which need not be installed in the system: the classic one with info and message_format.
class generator : public noncopyable {
  public:
    /// A folder with LANGUAGE/LC_MESSAGES/DOMAIN.mo, or LANGUAGE_COUNTRY, which goes first.
    void add_messages_path(std::string const &path) { paths_.push_back(path); }
    /// The first one is the default.
    void add_messages_domain(std::string const &domain) { domains_.push_back(domain); }

    /// The locale of a name, see info; made once. A catalogue that is of no use is logged and left out.
    std::locale generate(std::string const &name) const;
    std::locale operator()(std::string const &name) const { return generate(name); }

  private:
    std::locale make(std::string const &name) const;

    std::vector<std::string> paths_;
    std::vector<std::string> domains_;
    mutable std::mutex guard_;
    mutable std::map<std::string, std::locale> made_;
};

}  // namespace booster::locale

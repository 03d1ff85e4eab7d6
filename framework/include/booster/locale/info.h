#pragma once

#include <locale>
#include <string>

namespace booster::locale {

/// What the name of a generated locale says: LANGUAGE[_COUNTRY][.ENCODING][@VARIANT].
class info : public std::locale::facet {
  public:
    static std::locale::id id;

    /// \a name "" is what the environment says. One that cannot be read counts as "C".
    explicit info(std::string const &name);

    std::string const &name() const { return name_; }
    /// In lower case, "c" for no language.
    std::string const &language() const { return language_; }
    /// In upper case, "" for none.
    std::string const &country() const { return country_; }
    /// In lower case, "us-ascii" where the name has none.
    std::string const &encoding() const { return encoding_; }
    bool utf8() const;

  private:
    std::string name_;
    std::string language_ = "c";
    std::string country_;
    std::string encoding_ = "us-ascii";
};

}  // namespace booster::locale

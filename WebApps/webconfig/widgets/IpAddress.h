#pragma once

#include <cppcms/form.h>

#include <string>

namespace webconfig::widgets {

/// A field for an IPv4 address in dotted notation.
class IpAddress : public cppcms::widgets::regex_field {
  public:
    IpAddress();

    /// The expression that the field's text must match, with or without the empty text.
    static std::string const &RegexString(bool allowEmpty);

    bool GetAllowEmpty() const { return _allowEmpty; }
    void SetAllowEmpty(bool allowEmpty);

  private:
    bool _allowEmpty = false;
};

}  // namespace webconfig::widgets

#pragma once

#include <map>
#include <string>
#include <string_view>

namespace cppcms::http {

/// A parsed media type, as in `text/html; charset=utf-8`. Malformed text gives an empty type.
class content_type {
  public:
    content_type() = default;
    explicit content_type(std::string_view text);

    /// Without parameters, in lower case.
    std::string media_type() const { return media_type_; }

    /// Value of the parameter `charset`.
    std::string charset() const { return parameter_by_key("charset"); }
    /// Value of a parameter; \a key in lower case; "" where it is missing.
    std::string parameter_by_key(std::string const &key) const;
    std::map<std::string, std::string> parameters() const { return parameters_; }

    bool is_multipart_form_data() const { return media_type_ == "multipart/form-data"; }
    bool is_form_urlencoded() const { return media_type_ == "application/x-www-form-urlencoded"; }

  private:
    std::string media_type_;
    std::map<std::string, std::string> parameters_;
};

}  // namespace cppcms::http

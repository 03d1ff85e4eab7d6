#pragma once

#include <cppcms/form.h>

#include <string>

namespace webconfig::forms {

/// The country that a Wi-Fi page is set to, with the regulatory domain that limits the choice. A hidden copy
/// carries the country where the page's script has disabled the select.
class WifiCountry : public cppcms::form {
  public:
    /// The fields are named \a prefix + "CountryCode", their ids begin with \a prefix + "_".
    explicit WifiCountry(std::string const &prefix);

    /// Takes the country posted, also where scripts have left both fields enabled.
    void load(cppcms::http::context &context) override;

    /// Shows this country, and the module's regulatory domain.
    void Show(std::string const &code);
    /// Shows the module's regulatory domain.
    void ShowDomain();

    /// The country posted: the select's, or the copy's where the select was disabled.
    std::string Posted();
    /// Whether the country posted is one that the module offers; the select is marked where it is not.
    bool IsOffered();

    cppcms::widgets::select code;
    cppcms::widgets::hidden copy;
    cppcms::widgets::text regulatoryDomain;
};

}  // namespace webconfig::forms

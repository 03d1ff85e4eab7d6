#pragma once

#include <cppcms/json.h>

#include <string>

namespace webconfig::util {

/// Texts and markup of banner and footer.
struct Branding {
    std::string window_text;
    std::string banner_text;
    std::string footer_left_text;
    std::string footer_right_text;
    std::string banner_html;  // replaces the default banner when not empty
    std::string footer_html;  // replaces the default footer when not empty
};

/// The members of the same names of \a value; empty where there is no such text.
Branding ReadBranding(cppcms::json::value const &value);

}  // namespace webconfig::util

#include <cppcms/http_cookie.h>
#include <cppcms/http_response.h>

#include <ostream>

#include "header_text.h"

namespace cppcms::http {

namespace {

/// Writes \a text as it is where it is a token, else quoted.
void write_value(std::ostream &out, std::string const &text) {
    if (impl::header_reader(text).token().size() == text.size()) {
        out << text;
        return;
    }
    out << '"';
    for (char const c : text) {
        if (c == '"' || c == '\\')
            out << '\\';
        out << c;
    }
    out << '"';
}

}  // namespace

std::ostream &operator<<(std::ostream &out, cookie const &c) {
    out << "Set-Cookie:" << c.name_ << '=';
    write_value(out, c.value_);
    if (!c.comment_.empty()) {
        out << "; Comment=";
        write_value(out, c.comment_);
    }
    if (!c.domain_.empty())
        out << "; Domain=" << c.domain_;
    if (c.expires_)
        out << "; Expires=" << response::make_http_time(*c.expires_);
    if (c.max_age_)
        out << "; Max-Age=" << *c.max_age_;
    if (!c.path_.empty())
        out << "; Path=" << c.path_;
    if (c.secure_)
        out << "; Secure";
    if (c.httponly_)
        out << "; HttpOnly";
    return out << "; Version=1";
}

}  // namespace cppcms::http

#include <cppcms/form.h>

#include <booster/regex_match.h>
#include <cppcms/filters.h>

#include "../encoding.h"

namespace cppcms::widgets {

std::string base_text::value() {
    if (!set())
        throw cppcms_error("Value was not loaded");
    return text_;
}

void base_text::value(std::string const &text) {
    set(true);
    text_ = text;
}

void base_text::limits(int min, int max) {
    low_ = min;
    high_ = max;
}

void base_text::non_empty() {
    limits(1, -1);
}

void base_text::load(http::context &context) {
    pre_load(context);
    set(true);
    valid(true);
    auto const *sent = details::first_value(context, name());
    text_ = sent ? *sent : std::string();
    length_ = text_.size();
    if (validate_charset_)
        valid(impl::is_valid_text(context.locale(), text_, length_));
}

bool base_text::validate() {
    if (!valid())
        return false;
    if (!set() && low_ == 0 && high_ == -1)
        return true;
    auto const length = static_cast<long long>(length_);
    if (length < low_ || (high_ >= 0 && length > high_))
        valid(false);
    return valid();
}

void base_text::clear() {
    set(false);
}

void base_html_input::render_input(form_context &context) {
    auto &out = context.out();
    if (context.widget_part() == first_part) {
        out << "<input type=\"" << type_ << "\" ";
        render_attributes(context);
        render_value(context);
    } else {
        out << (context.html() == as_xhtml ? " />" : " >");
    }
}

void text::render_attributes(form_context &context) {
    base_widget::render_attributes(context);
    auto &out = context.out();
    if (size_ >= 0)
        out << "size=\"" << size_ << "\" ";
    // Browsers count characters: the limit tells them nothing where it counts bytes.
    if (high_ >= 0 && validate_charset_)
        out << "maxlength=\"" << high_ << "\" ";
    if (readonly())
        out << "readonly=\"readonly\" ";
}

void text::render_value(form_context &context) {
    if (set())
        context.out() << " value=\"" << filters::escape(text_) << '"';
}

bool password::validate() {
    if (!text::validate()) {
        value("");
        return false;
    }
    if (!other_ || (set() && other_->set() && value() == other_->value()))
        return true;
    valid(false);
    value("");
    other_->value("");
    return false;
}

void textarea::render_input(form_context &context) {
    auto &out = context.out();
    if (context.widget_part() == second_part) {
        out << '>';
        if (set())
            out << filters::escape(text_);
        out << "</textarea>";
        return;
    }
    out << "<textarea ";
    render_attributes(context);
    if (rows_ >= 0)
        out << "rows=\"" << rows_ << "\" ";
    if (cols_ >= 0)
        out << "cols=\"" << cols_ << "\" ";
}

bool regex_field::validate() {
    if (!text::validate())
        return false;
    valid(set() && booster::regex_match(value(), expression_));
    return valid();
}

email::email() {
    static booster::regex const address(R"(^[^@]+@[^@]+$)");
    regex(address);
}

}  // namespace cppcms::widgets

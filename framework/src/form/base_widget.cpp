#include <cppcms/form.h>

#include <cppcms/filters.h>

namespace cppcms::widgets {

std::string const *details::first_value(http::context &context, std::string const &name) {
    auto const &sent = context.request().post_or_get();
    auto const first = sent.lower_bound(name);
    return first == sent.end() || first->first != name ? nullptr : &first->second;
}

void base_widget::clear() {
    set(false);
}

bool base_widget::validate() {
    valid(true);
    return true;
}

void base_widget::pre_load(http::context &) {
    auto_generate();
}

void base_widget::auto_generate(form_context *) {
    if (numbered_)
        return;
    base_form *top = this;
    while (top->parent())
        top = top->parent();
    auto *const whole = dynamic_cast<form *>(top);
    if (!whole) {
        number(1);
        return;
    }
    unsigned place = 0;
    for (auto &widget : *whole)
        widget.number(++place);
}

void base_widget::number(unsigned place) {
    if (numbered_)
        return;
    numbered_ = true;
    if (name_.empty())
        name_ = '_' + std::to_string(place);
}

void base_widget::render_attributes(form_context &context) {
    auto_generate(&context);
    auto &out = context.out();
    if (!id_.empty())
        out << "id=\"" << id_ << "\" ";
    if (!name_.empty())
        out << "name=\"" << name_ << "\" ";
    if (disabled_)
        out << (context.html() == as_xhtml ? "disabled=\"disabled\" " : "disabled ");
}

void base_widget::render_control(form_context &context) {
    context.widget_part(first_part);
    render_input(context);
    context.out() << attributes_;
    context.widget_part(second_part);
    render_input(context);
}

void base_widget::render_message(form_context &context) {
    if (!message_)
        return;
    if (id_.empty())
        context.out() << filters::escape(*message_);
    else
        context.out() << "<label for=\"" << id_ << "\">" << filters::escape(*message_) << "</label>";
}

void base_widget::render_error(std::ostream &out) {
    out << "<span class=\"cppcms_form_error\">";
    if (error_message_)
        out << filters::escape(*error_message_);
    else
        out << '*';
    out << "</span> ";
}

void base_widget::render_field(form_context &context) {
    auto &out = context.out();
    out << "<span class=\"cppcms_form_input\">";
    render_control(context);
    out << "</span>";
    if (help_)
        out << "<span class=\"cppcms_form_help\">" << filters::escape(*help_) << "</span>";
}

void base_widget::render(form_context &context) {
    struct markup {
        char const *before_message;
        char const *after_message;
        char const *after_field;
    };
    static constexpr markup markups[] = {
        {"<p>", "", "</p>\n"},                      // as_p
        {"<tr><th>", "</th><td>", "</td></tr>\n"},  // as_table
        {"<li>", "", "</li>\n"},                    // as_ul
        {"<dt>", "</dt><dd>", "</dd>\n"},           // as_dl
        {"", "", "\n"},                             // as_space
    };
    auto const list = context.html_list();
    auto const &markup = markups[list];
    auto &out = context.out();

    auto_generate(&context);
    out << markup.before_message;
    render_message(context);
    if (list == as_table ? !message_ : list != as_dl && message_)
        out << "&nbsp;";
    out << markup.after_message;
    if (!valid_)
        render_error(out);
    else if (list == as_table)
        out << "&nbsp;";
    render_field(context);
    out << markup.after_field;
}

}  // namespace cppcms::widgets

#include <cppcms/form.h>

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

}  // namespace cppcms::widgets

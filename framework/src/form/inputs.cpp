#include <cppcms/form.h>

#include <cppcms/filters.h>

namespace cppcms::widgets {

checkbox::checkbox() : base_html_input("checkbox") {
    set(true);
}

void checkbox::load(http::context &context) {
    pre_load(context);
    set(true);
    checked_ = false;
    auto const [first, last] = context.request().post_or_get().equal_range(name());
    for (auto sent = first; sent != last; ++sent)
        checked_ = checked_ || sent->second == identification_;
}

void checkbox::render_value(form_context &context) {
    if (checked_)
        context.out() << (context.html() == as_xhtml ? " checked=\"checked\" " : " checked ");
    context.out() << "value=\"" << filters::escape(identification_) << "\" ";
}

submit::submit() : base_html_input("submit") {
    set(true);
}

void submit::load(http::context &context) {
    pre_load(context);
    set(true);
    pressed_ = details::first_value(context, name()) != nullptr;
}

void submit::render_value(form_context &context) {
    context.out() << "value=\"" << filters::escape(caption_) << "\" ";
}

}  // namespace cppcms::widgets

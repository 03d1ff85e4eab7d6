#include <cppcms/form.h>

namespace cppcms {

std::ostream &form_context::out() const {
    if (!out_)
        throw cppcms_error("Can't use form context without assigned output");
    return *out_;
}

base_form &form::base(element const &element) {
    return *std::visit([](auto *form_or_widget) -> base_form * { return form_or_widget; }, element);
}

void form::load(http::context &context) {
    for (auto const &element : elements_)
        base(element).load(context);
}

bool form::validate() {
    bool valid = true;
    for (auto const &element : elements_)
        valid = base(element).validate() && valid;
    return valid;
}

void form::clear() {
    for (auto const &element : elements_)
        base(element).clear();
}

void form::add(form &sub_form) {
    elements_.emplace_back(&sub_form);
    sub_form.parent(this);
}

void form::add(widgets::base_widget &widget) {
    elements_.emplace_back(&widget);
    widget.parent(this);
}

void form::attach(form *sub_form) {
    owned_.emplace_back(sub_form);
    add(*sub_form);
}

void form::attach(widgets::base_widget *widget) {
    owned_.emplace_back(widget);
    add(*widget);
}

form &form::operator+(form &sub_form) {
    add(sub_form);
    return *this;
}

form &form::operator+(widgets::base_widget &widget) {
    add(widget);
    return *this;
}

form::iterator form::begin() {
    return iterator(*this);
}

form::iterator form::end() {
    return iterator();
}

form::iterator::iterator(form &whole) : path_{{&whole, 0}} {
    settle();
}

/// Moves from a place between elements to the next widget, or to the end.
void form::iterator::settle() {
    while (!path_.empty()) {
        auto const [where, place] = path_.back();
        if (place == where->elements_.size()) {
            path_.pop_back();
            if (!path_.empty())
                ++path_.back().second;
        } else if (auto *const *sub_form = std::get_if<form *>(&where->elements_[place])) {
            path_.emplace_back(*sub_form, 0);
        } else {
            return;
        }
    }
}

widgets::base_widget &form::iterator::operator*() const {
    auto const &[where, place] = path_.back();
    return *std::get<widgets::base_widget *>(where->elements_[place]);
}

form::iterator &form::iterator::operator++() {
    ++path_.back().second;
    settle();
    return *this;
}

form::iterator form::iterator::operator++(int) {
    iterator before = *this;
    ++*this;
    return before;
}

}  // namespace cppcms

#include <cppcms/form.h>

#include <cppcms/filters.h>

#include <algorithm>

namespace cppcms::widgets {

namespace {

char const *selected_word(form_context const &context) {
    return context.html() == form_flags::as_xhtml ? "selected=\"selected\" " : "selected ";
}

void render_option(form_context &context, std::string const &id, details::caption const &text,
                   bool selected) {
    context.out() << "<option value=\"" << filters::escape(id) << "\" "
                  << (selected ? selected_word(context) : "") << '>' << filters::escape(text)
                  << "</option>\n";
}

}  // namespace

void select_base::add(std::string const &text) {
    add(text, std::to_string(elements_.size()));
}

void select_base::add(std::string const &text, std::string const &id) {
    elements_.push_back({id, text});
}

void select_base::add(locale::message const &text) {
    add(text, std::to_string(elements_.size()));
}

void select_base::add(locale::message const &text, std::string const &id) {
    elements_.push_back({id, text});
}

int select_base::find(std::string const &id) const {
    auto const found = std::find_if(elements_.begin(), elements_.end(),
                                    [&](element const &element) { return element.id == id; });
    return found == elements_.end() ? -1 : static_cast<int>(found - elements_.begin());
}

std::string select_base::selected_id() {
    return selected_ < 0 ? std::string() : elements_[static_cast<std::size_t>(selected_)].id;
}

void select_base::selected(int index) {
    if (index >= static_cast<int>(elements_.size()))
        throw cppcms_error("select_base::invalid index");
    selected_ = default_selected_ = std::max(index, -1);
}

void select_base::selected_id(std::string const &id) {
    int const index = id.empty() ? -1 : find(id);
    if (index < 0 && !id.empty())
        throw cppcms_error("Select base::invalid index: " + id);
    selected(index);
}

void select_base::load(http::context &context) {
    pre_load(context);
    set(true);
    auto const &sent = context.request().post_or_get();
    selected_ = sent.count(name()) == 1 ? find(sent.find(name())->second) : -1;
}

bool select_base::validate() {
    valid(!non_empty_ || selected_ >= 0);
    return valid();
}

void select_base::clear() {
    selected_ = default_selected_;
}

void select::render_input(form_context &context) {
    auto &out = context.out();
    if (context.widget_part() == first_part) {
        out << "<select ";
        render_attributes(context);
        return;
    }
    out << " >\n";
    int index = 0;
    for (auto const &element : elements_)
        render_option(context, element.id, element.text, index++ == selected_);
    out << "</select>";
}

void radio::render_input(form_context &context) {
    auto &out = context.out();
    bool const xhtml = context.html() == as_xhtml;
    auto_generate(&context);
    if (context.widget_part() == first_part) {
        out << "<div class=\"cppcms_radio\" ";
        if (!id().empty())
            out << "id=\"" << id() << "\" ";
        return;
    }
    out << " >\n";
    int index = 0;
    for (auto const &element : elements_) {
        out << "<input type=\"radio\" value=\"" << filters::escape(element.id) << "\" name=\"" << name()
            << "\" ";
        if (index++ == selected_)
            out << (xhtml ? "checked=\"checked\" " : "checked ");
        if (disabled())
            out << (xhtml ? "disabled=\"disabled\" " : "disabled ");
        out << (xhtml ? "/> " : "> ") << filters::escape(element.text);
        if (vertical_)
            out << (xhtml ? "<br />" : "<br>");
        out << '\n';
    }
    out << "</div>";
}

void select_multiple::add(details::caption const &text, std::string const &id, bool selected) {
    elements_.push_back({id, text, selected, selected});
}

void select_multiple::add(std::string const &text, bool selected) {
    add(details::caption(text), std::to_string(elements_.size()), selected);
}

void select_multiple::add(std::string const &text, std::string const &id, bool selected) {
    add(details::caption(text), id, selected);
}

void select_multiple::add(locale::message const &text, bool selected) {
    add(details::caption(text), std::to_string(elements_.size()), selected);
}

void select_multiple::add(locale::message const &text, std::string const &id, bool selected) {
    add(details::caption(text), id, selected);
}

std::vector<bool> select_multiple::selected_map() {
    std::vector<bool> map;
    for (auto const &element : elements_)
        map.push_back(element.selected);
    return map;
}

std::set<std::string> select_multiple::selected_ids() {
    std::set<std::string> ids;
    for (auto const &element : elements_)
        if (element.selected)
            ids.insert(element.id);
    return ids;
}

void select_multiple::load(http::context &context) {
    pre_load(context);
    set(true);
    std::set<std::string> sent;
    auto const [first, last] = context.request().post_or_get().equal_range(name());
    for (auto value = first; value != last; ++value)
        sent.insert(value->second);
    for (auto &element : elements_)
        element.selected = sent.contains(element.id);
}

bool select_multiple::validate() {
    auto const count = static_cast<unsigned>(std::count_if(
        elements_.begin(), elements_.end(), [](element const &element) { return element.selected; }));
    valid(count >= at_least_ && count <= at_most_);
    return valid();
}

void select_multiple::clear() {
    for (auto &element : elements_)
        element.selected = element.selected_by_default;
}

void select_multiple::render_input(form_context &context) {
    auto &out = context.out();
    if (context.widget_part() == first_part) {
        out << (context.html() == as_xhtml ? "<select multiple=\"multiple\" " : "<select multiple ");
        if (rows_ > 0)
            out << " size=\"" << rows_ << "\" ";
        render_attributes(context);
        return;
    }
    out << " >\n";
    for (auto const &element : elements_)
        render_option(context, element.id, element.text, element.selected);
    out << "</select>";
}

}  // namespace cppcms::widgets

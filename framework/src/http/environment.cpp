#include "environment.h"

namespace cppcms::impl {

namespace {

// What a web server sends for a usual request.
constexpr std::size_t usual_bytes = 2048;
constexpr std::size_t usual_variables = 48;

}  // namespace

void environment::add(std::string_view name, std::string_view value) {
    if (variables_.empty()) {
        text_.reserve(usual_bytes);
        variables_.reserve(usual_variables);
    }
    variable added{};
    added.name = static_cast<std::uint32_t>(text_.size());
    text_.append(name).push_back('\0');
    added.value = static_cast<std::uint32_t>(text_.size());
    text_.append(value);
    added.end = static_cast<std::uint32_t>(text_.size());
    text_.push_back('\0');
    variables_.push_back(added);
}

std::string_view environment::get(std::string_view name) const {
    for (variable const &v : variables_)
        if (name_of(v) == name)
            return value_of(v);
    return "";
}

std::map<std::string, std::string> environment::all() const {
    std::map<std::string, std::string> result;
    for (variable const &v : variables_)
        result.emplace(name_of(v), value_of(v));
    return result;
}

std::string_view environment::name_of(variable const &v) const {
    return std::string_view(text_).substr(v.name, v.value - v.name - 1);
}

std::string_view environment::value_of(variable const &v) const {
    return std::string_view(text_).substr(v.value, v.end - v.value);
}

}  // namespace cppcms::impl

#include <cppcms/json.h>

#include <algorithm>
#include <array>
#include <ostream>

namespace cppcms::json {

namespace {

constexpr std::array<char const *, 7> type_names{"undefined", "null",   "boolean", "number",
                                                 "string",    "object", "array"};

value const no_value;

/// Calls \a visit with each name on the path until it returns false. Returns whether the path was walked
/// to its end; a path with an empty name is not.
template <typename Visit>
bool walk(std::string const &path, Visit visit) {
    for (std::size_t from = 0;;) {
        auto const dot = std::min(path.find('.', from), path.size());
        if (dot == from || !visit(path.substr(from, dot - from)))
            return false;
        if (dot == path.size())
            return true;
        from = dot + 1;
    }
}

bool has_empty_name(std::string const &path) {
    return !walk(path, [](std::string const &) { return true; });
}

}  // namespace

std::ostream &operator<<(std::ostream &out, string_key const &key) {
    return out << key.str();
}

std::ostream &operator<<(std::ostream &out, json_type type) {
    return out << type_names[type];
}

bad_value_cast::bad_value_cast() : text_("cppcms::json::bad_cast") {}

bad_value_cast::bad_value_cast(std::string const &problem) : text_("cppcms::json::bad_cast: " + problem) {}

bad_value_cast::bad_value_cast(std::string const &problem, json_type from, json_type to)
    : bad_value_cast(problem + " error converting from " + type_names[from] + " to " + type_names[to]) {}

char const *bad_value_cast::what() const noexcept {
    return text_.c_str();
}

// The variant's own operations are kept in this file: they are large, and used all over.

value::value() noexcept = default;
value::value(value const &) = default;
value::value(value &&) noexcept = default;
value::~value() = default;
bool value::operator==(value const &other) const {
    return data_ == other.data_;  // written out, because Clang 14 crashes on the default
}

void value::swap(value &other) noexcept {
    data_.swap(other.data_);
}

/// The content may come from a part of this value: it is moved in as a whole.
template <typename T>
void value::assign(T content) {
    data_ = std::move(content);
}

void value::undefined() {
    assign(json::undefined());
}

void value::null() {
    assign(json::null());
}

void value::boolean(bool content) {
    assign(content);
}

void value::number(double content) {
    assign(content);
}

void value::str(std::string const &content) {
    assign(content);
}

void value::object(json::object const &content) {
    assign(content);
}

void value::array(json::array const &content) {
    assign(content);
}

void value::wrong_type(json_type wanted) const {
    throw bad_value_cast("invalid type", type(), wanted);
}

value const &value::find(std::string const &path) const {
    value const *at = this;
    bool const walked = walk(path, [&](std::string const &name) {
        auto const *members = std::get_if<json::object>(&at->data_);
        if (!members)
            return false;
        auto const member = members->find(name);
        if (member == members->end())
            return false;
        at = &member->second;
        return true;
    });
    return walked ? *at : no_value;
}

value const &value::at(std::string const &path) const {
    value const &found = find(path);
    if (found.is_undefined())
        throw bad_value_cast("Value not found at " + path);
    return found;
}

value &value::at(std::string const &path) {
    if (has_empty_name(path))
        throw bad_value_cast("Invalid path provided");
    value *at = this;
    walk(path, [&](std::string const &name) {
        at = &const_cast<value &>(static_cast<value const &>(*at)[name]);
        return true;
    });
    return *at;
}

void value::at(std::string const &path, value const &content) {
    if (has_empty_name(path))
        throw bad_value_cast("Invalid path provided");
    value copy(content);  // it may be a part of this value
    value *at = this;
    walk(path, [&](std::string const &name) {
        at = &(*at)[name];
        return true;
    });
    at->swap(copy);
}

value &value::operator[](std::string const &name) {
    if (type() != is_object)
        assign(json::object());
    return object()[name];
}

value const &value::operator[](std::string const &name) const {
    // These two name the types the other way round than the typed accessors do.
    if (type() != is_object)
        throw bad_value_cast("", is_object, type());
    auto const member = object().find(name);
    if (member == object().end())
        throw bad_value_cast("Member " + name + " not found");
    return member->second;
}

value &value::operator[](std::size_t n) {
    if (type() != is_array)
        assign(json::array());
    if (n >= array().size())
        array().resize(n + 1, json::null());
    return array()[n];
}

value const &value::operator[](std::size_t n) const {
    if (type() != is_array)
        throw bad_value_cast("", is_array, type());
    if (n >= array().size())
        throw bad_value_cast("Index out of range");
    return array()[n];
}

}  // namespace cppcms::json

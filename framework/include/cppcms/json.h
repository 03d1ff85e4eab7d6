#pragma once

#include <booster/backtrace.h>

#include <cmath>
#include <cstddef>
#include <iosfwd>
#include <limits>
#include <map>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace cppcms::json {

class value;

/// The JSON null.
struct null {
    bool operator==(null const &) const = default;
};

/// "No value here": the state of a default-constructed value. It cannot be written to a stream.
struct undefined {
    bool operator==(undefined const &) const = default;
};

/// Key of an object member; keys are ordered by their bytes.
class string_key {
  public:
    string_key() = default;
    string_key(std::string key) : key_(std::move(key)) {}
    string_key(char const *key) : key_(key) {}

    std::string const &str() const { return key_; }

    auto operator<=>(string_key const &) const = default;

  private:
    std::string key_;
};

std::ostream &operator<<(std::ostream &out, string_key const &key);

typedef std::vector<value> array;
typedef std::map<string_key, value> object;

/// Type of a value, in the order of the alternatives it is kept in.
enum json_type { is_undefined, is_null, is_boolean, is_number, is_string, is_object, is_array };

/// Writes the name of the type: `undefined`, `null`, `boolean` and so on.
std::ostream &operator<<(std::ostream &out, json_type type);

/// How values are written: without any blanks, or one member a line.
enum { compact = 0, readable = 1 };

/// A value is missing or is of another type than the one asked for.
class bad_value_cast : public booster::bad_cast {
  public:
    bad_value_cast();
    explicit bad_value_cast(std::string const &problem);
    bad_value_cast(std::string const &problem, json_type from, json_type to);

    char const *what() const noexcept override;

  private:
    std::string text_;
};

/// Conversion between a value and T. Specialise it for types of your own:
/// `static T get(value const &)` throws bad_value_cast, `static void set(value &, T const &)`.
template <typename T>
struct traits;

/// A JSON value. Paths are member names joined by dots (`"service.api"`).
class value {
  public:
    value() noexcept;
    /// Any type that traits<T> knows.
    template <typename T>
    value(T const &from) {
        set_value(from);
    }

    value(value const &other);
    value(value &&other) noexcept;
    ~value();
    /// By value: what is assigned may be a part of this value.
    value &operator=(value other) noexcept {
        swap(other);
        return *this;
    }

    json_type type() const { return static_cast<json_type>(data_.index()); }
    /// Type of the value at \a path, is_undefined where there is none.
    json_type type(std::string const &path) const { return find(path).type(); }
    bool is_undefined() const { return type() == json::is_undefined; }
    bool is_null() const { return type() == json::is_null; }

    // The content, by type; bad_value_cast where the value is of another one.
    bool const &boolean() const { return as<bool>(); }
    double const &number() const { return as<double>(); }
    std::string const &str() const { return as<std::string>(); }
    json::object const &object() const { return as<json::object>(); }
    json::array const &array() const { return as<json::array>(); }
    bool &boolean() { return as<bool>(); }
    double &number() { return as<double>(); }
    std::string &str() { return as<std::string>(); }
    json::object &object() { return as<json::object>(); }
    json::array &array() { return as<json::array>(); }

    void undefined();
    void null();
    void boolean(bool content);
    void number(double content);
    void str(std::string const &content);
    void object(json::object const &content);
    void array(json::array const &content);

    /// The value as T; bad_value_cast where it cannot be one without loss.
    template <typename T>
    T get_value() const {
        return traits<T>::get(*this);
    }
    template <typename T>
    void set_value(T const &content) {
        traits<T>::set(*this, content);
    }

    /// The value at \a path, an undefined one where there is none. Does not fail.
    value const &find(std::string const &path) const;

    /// The value at \a path; bad_value_cast where there is none.
    value const &at(std::string const &path) const;
    value &at(std::string const &path);
    /// Puts a value at \a path. Whatever stands in the way becomes an object.
    void at(std::string const &path, value const &content);
    void set(std::string const &path, value const &content) { at(path, content); }

    /// The value at \a path as T; bad_value_cast where it is missing or of another type.
    template <typename T>
    T get(std::string const &path) const {
        return at(path).get_value<T>();
    }
    /// The value at \a path as T, \a fallback where it is missing or of another type.
    template <typename T>
    T get(std::string const &path, T const &fallback) const {
        value const &found = find(path);
        if (found.is_undefined())
            return fallback;
        try {
            return found.get_value<T>();
        } catch (std::bad_cast const &) {
            return fallback;
        }
    }
    std::string get(std::string const &path, char const *fallback) const {
        return get(path, std::string(fallback));
    }

    /// The member \a name, made (undefined) where it is missing; what is no object becomes one.
    value &operator[](std::string const &name);
    value const &operator[](std::string const &name) const;
    /// The element \a n, the array filled with nulls up to it; what is no array becomes one.
    value &operator[](std::size_t n);
    value const &operator[](std::size_t n) const;

    bool operator==(value const &other) const;
    void swap(value &other) noexcept;

    /// Reads one value. With \a full nothing but blanks and comments may follow it. On failure returns
    /// false, leaves the value alone and stores in \a line the line, from 1, where reading stopped.
    bool load(std::istream &in, bool full, int *line = nullptr);
    /// The same from memory; \a begin is moved behind what was read.
    bool load(char const *&begin, char const *end, bool full, int *line = nullptr);

    /// The value as JSON text; bad_value_cast where a part of it is undefined.
    std::string save(int how = compact) const;
    /// What was written before an undefined part stays in the stream.
    void save(std::ostream &out, int how = compact) const;

  private:
    template <typename T>
    T const &as() const {
        if (auto const *content = std::get_if<T>(&data_))
            return *content;
        wrong_type(static_cast<json_type>(decltype(data_)(T()).index()));
    }
    template <typename T>
    T &as() {
        return const_cast<T &>(static_cast<value const &>(*this).as<T>());
    }
    template <typename T>
    void assign(T content);
    [[noreturn]] void wrong_type(json_type wanted) const;

    std::variant<json::undefined, json::null, bool, double, std::string, json::object, json::array> data_;
};

inline void swap(value &a, value &b) noexcept {
    a.swap(b);
}

/// Reads one value; what follows it stays in the stream. Sets failbit where there is none.
std::istream &operator>>(std::istream &in, value &v);

/// Writes compact JSON text.
std::ostream &operator<<(std::ostream &out, value const &v);

/// \a text as a JSON string, quotes included.
std::string to_json(std::string const &text);
std::string to_json(char const *begin, char const *end);
void to_json(std::string const &text, std::ostream &out);
void to_json(char const *begin, char const *end, std::ostream &out);

template <>
struct traits<value> {
    static value get(value const &v) { return v; }
    static void set(value &v, value const &content) { v = content; }
};

template <>
struct traits<bool> {
    static bool get(value const &v) { return v.boolean(); }
    static void set(value &v, bool content) { v.boolean(content); }
};

/// Numbers; one that does not fit T, or has a fraction where T is an integer, is a bad_value_cast.
template <typename T>
requires std::is_arithmetic_v<T>
struct traits<T> {
    static T get(value const &v) {
        double const number = v.number();
        if (!fits(number))
            throw bad_value_cast();
        return static_cast<T>(number);
    }
    static void set(value &v, T content) { v.number(static_cast<double>(content)); }

  private:
    static bool fits(double number) {
        using limits = std::numeric_limits<T>;
        if constexpr (std::is_integral_v<T>) {
            // The upper bound is one beyond max(), as max() itself may have no double.
            return number >= static_cast<double>(limits::min()) && number < std::ldexp(1.0, limits::digits) &&
                   std::trunc(number) == number;
        } else {
            return !std::isfinite(number) || std::abs(number) <= limits::max();
        }
    }
};

template <>
struct traits<std::string> {
    static std::string get(value const &v) { return v.str(); }
    static void set(value &v, std::string const &content) { v.str(content); }
};

template <>
struct traits<char const *> {
    static void set(value &v, char const *content) { v.str(content); }
};

template <>
struct traits<char *> : traits<char const *> {};

template <std::size_t Size>
struct traits<char[Size]> : traits<char const *> {};

template <>
struct traits<json::null> {
    static json::null get(value const &v) {
        if (!v.is_null())
            throw bad_value_cast("invalid type", v.type(), is_null);
        return {};
    }
    static void set(value &v, json::null) { v.null(); }
};

template <>
struct traits<json::object> {
    static json::object get(value const &v) { return v.object(); }
    static void set(value &v, json::object const &content) { v.object(content); }
};

template <>
struct traits<json::array> {
    static json::array get(value const &v) { return v.array(); }
    static void set(value &v, json::array const &content) { v.array(content); }
};

template <typename T>
struct traits<std::vector<T>> {
    static std::vector<T> get(value const &v) {
        std::vector<T> content;
        content.reserve(v.array().size());
        for (value const &element : v.array())
            content.push_back(element.get_value<T>());
        return content;
    }
    static void set(value &v, std::vector<T> const &content) {
        json::array elements;
        elements.reserve(content.size());
        for (T const &element : content)
            elements.emplace_back(element);
        v.array(elements);
    }
};

}  // namespace cppcms::json

#pragma once

#include <booster/function.h>
#include <booster/noncopyable.h>
#include <booster/regex.h>
#include <cppcms/application.h>
#include <cppcms/steal_buf.h>

#include <array>
#include <concepts>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace cppcms {

/// Reads a parameter of a map() rule from the whole text of its group; false makes the rule not match.
/// Overload it for types of your own.
template <typename T>
bool parse_url_parameter(util::const_char_istream &text, T &value) {
    text >> value;
    return text && text.peek() == std::char_traits<char>::eof();
}

inline bool parse_url_parameter(util::const_char_istream &text, std::string &value) {
    value.assign(text.begin(), text.end());
    return true;
}

/// Routes URLs to handlers by regular expressions. Rules are tried in the order in which they were added;
/// the first whose expression matches the whole URL wins.
class url_dispatcher : public booster::noncopyable {
  public:
    using handler = booster::function<void()>;
    using handler1 = booster::function<void(std::string)>;
    using handler2 = booster::function<void(std::string, std::string)>;
    using handler3 = booster::function<void(std::string, std::string, std::string)>;
    using handler4 = booster::function<void(std::string, std::string, std::string, std::string)>;
    using handler5 = booster::function<void(std::string, std::string, std::string, std::string, std::string)>;
    using handler6 =
        booster::function<void(std::string, std::string, std::string, std::string, std::string, std::string)>;
    using rhandler = booster::function<void(booster::cmatch const &)>;
    using generic_handler = booster::function<bool(application &, booster::cmatch const &)>;

    /// An expression given compiled or as text.
    struct expression {
        expression(booster::regex const &compiled) : regex(compiled) {}
        expression(std::string const &pattern) : regex(pattern) {}
        expression(char const *pattern) : regex(std::string(pattern)) {}

        booster::regex regex;
    };

    url_dispatcher() = default;
    explicit url_dispatcher(application *app) : app_(app) {}

    // A handler is given the text of the named groups: 1 is the first, 0 the whole match; a group that
    // took no part in the match is "". A member function of an application runs between that
    // application's init() and clear().

    void assign(std::string const &pattern, handler const &h);
    void assign(std::string const &pattern, handler1 const &h, int g1);
    void assign(std::string const &pattern, handler2 const &h, int g1, int g2);
    void assign(std::string const &pattern, handler3 const &h, int g1, int g2, int g3);
    void assign(std::string const &pattern, handler4 const &h, int g1, int g2, int g3, int g4);
    void assign(std::string const &pattern, handler5 const &h, int g1, int g2, int g3, int g4, int g5);
    void assign(std::string const &pattern, handler6 const &h, int g1, int g2, int g3, int g4, int g5,
                int g6);
    template <typename C, std::same_as<std::string>... Texts, std::same_as<int>... Groups>
    void assign(std::string const &pattern, void (C::*member)(Texts...), C *object, Groups... groups) {
        static_assert(sizeof...(Texts) == sizeof...(Groups), "one group for each parameter");
        add(booster::regex(pattern), [member, object, groups...](booster::cmatch const &match) {
            call(object, [&] { (object->*member)(match[groups].str()...); });
            return true;
        });
    }

    void assign_generic(std::string const &pattern, rhandler const &h);
    template <typename C>
    void assign_generic(std::string const &pattern, void (C::*member)(booster::cmatch const &), C *object) {
        add(booster::regex(pattern), [member, object](booster::cmatch const &match) {
            call(object, [&] { (object->*member)(match); });
            return true;
        });
    }

    // map: parameters of any type that parse_url_parameter() reads, and optionally the request method: a
    // name in capitals, or an expression that the whole method must match. A parameter that cannot be
    // read, or text that is not valid in the request's encoding, makes the rule not match.

    template <typename C, typename... Parameters, std::same_as<int>... Groups>
    void map(expression const &pattern, void (C::*member)(Parameters...), C *object, Groups... groups) {
        map_generic(pattern, member_handler(member, object, {{groups...}}));
    }
    template <typename C, typename... Parameters, std::same_as<int>... Groups>
    void map(std::string const &method, expression const &pattern, void (C::*member)(Parameters...),
             C *object, Groups... groups) {
        map_generic(method, pattern, member_handler(member, object, {{groups...}}));
    }
    void map_generic(expression const &pattern, generic_handler const &h);
    void map_generic(std::string const &method, expression const &pattern, generic_handler const &h);

    /// Hands URLs that match to app.main(), with the text of group \a part.
    void mount(std::string const &pattern, application &app, int part);

    /// Runs the first rule that matches; false where there is none.
    bool dispatch(std::string url);

  private:
    /// Returns false where the rule does not apply after all, and the next one is tried.
    using rule_handler = booster::function<bool(booster::cmatch const &)>;
    struct rule {
        booster::regex regex;
        rule_handler handle;
    };

    template <typename C, typename Function>
    static void call(C *object, Function const &function) {
        if constexpr (std::is_base_of_v<application, C>) {
            struct session {
                application &app;
                explicit session(application &a) : app(a) { app.init(); }
                ~session() { app.clear(); }
            } const guard(*object);
            function();
        } else {
            function();
        }
    }

    template <typename C, typename... Parameters>
    static generic_handler member_handler(void (C::*member)(Parameters...), C *object,
                                          std::array<int, sizeof...(Parameters)> groups) {
        return [member, object, groups](application &app, booster::cmatch const &match) {
            std::tuple<std::decay_t<Parameters>...> values;
            auto const read = [&]<std::size_t... I>(std::index_sequence<I...>) {
                return (read_parameter(app, match[groups[I]].str(), std::get<I>(values)) && ...);
            };
            if (!read(std::index_sequence_for<Parameters...>{}))
                return false;
            call(object, [&] {
                std::apply([&](auto const &...parameters) { (object->*member)(parameters...); }, values);
            });
            return true;
        };
    }

    template <typename T>
    static bool read_parameter(application &app, std::string const &text, T &value) {
        if (!is_valid_text(app, text))
            return false;
        util::const_char_istream stream(text.data(), text.data() + text.size());
        stream.imbue(std::locale::classic());
        return parse_url_parameter(stream, value);
    }

    static bool is_valid_text(application &app, std::string const &text);
    void add(booster::regex const &regex, rule_handler handle);

    application *app_ = nullptr;
    std::vector<rule> rules_;
};

}  // namespace cppcms

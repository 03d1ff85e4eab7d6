#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/url_dispatcher.h>

#include <algorithm>

#include "encoding.h"

namespace cppcms {

namespace {

bool is_plain_method(std::string const &method) {
    return std::all_of(method.begin(), method.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

}  // namespace

bool url_dispatcher::is_valid_text(application &app, std::string const &text) {
    std::size_t length = 0;
    return impl::is_valid_text(app.context().locale(), text, length);
}

void url_dispatcher::add(booster::regex const &regex, rule_handler handle) {
    rules_.push_back({regex, std::move(handle)});
}

void url_dispatcher::assign(std::string const &pattern, handler const &h) {
    add(pattern, [h](booster::cmatch const &) {
        h();
        return true;
    });
}

void url_dispatcher::assign(std::string const &pattern, handler1 const &h, int g1) {
    assign_generic(pattern, [=](booster::cmatch const &m) { h(m[g1]); });
}

void url_dispatcher::assign(std::string const &pattern, handler2 const &h, int g1, int g2) {
    assign_generic(pattern, [=](booster::cmatch const &m) { h(m[g1], m[g2]); });
}

void url_dispatcher::assign(std::string const &pattern, handler3 const &h, int g1, int g2, int g3) {
    assign_generic(pattern, [=](booster::cmatch const &m) { h(m[g1], m[g2], m[g3]); });
}

void url_dispatcher::assign(std::string const &pattern, handler4 const &h, int g1, int g2, int g3, int g4) {
    assign_generic(pattern, [=](booster::cmatch const &m) { h(m[g1], m[g2], m[g3], m[g4]); });
}

void url_dispatcher::assign(std::string const &pattern, handler5 const &h, int g1, int g2, int g3, int g4,
                            int g5) {
    assign_generic(pattern, [=](booster::cmatch const &m) { h(m[g1], m[g2], m[g3], m[g4], m[g5]); });
}

void url_dispatcher::assign(std::string const &pattern, handler6 const &h, int g1, int g2, int g3, int g4,
                            int g5, int g6) {
    assign_generic(pattern, [=](booster::cmatch const &m) { h(m[g1], m[g2], m[g3], m[g4], m[g5], m[g6]); });
}

void url_dispatcher::assign_generic(std::string const &pattern, rhandler const &h) {
    add(pattern, [h](booster::cmatch const &match) {
        h(match);
        return true;
    });
}

void url_dispatcher::map_generic(expression const &pattern, generic_handler const &h) {
    add(pattern.regex,
        [this, h](booster::cmatch const &match) { return app_ && app_->has_context() && h(*app_, match); });
}

void url_dispatcher::map_generic(std::string const &method, expression const &pattern,
                                 generic_handler const &h) {
    bool const plain = is_plain_method(method);
    booster::regex const method_expression = plain ? booster::regex() : booster::regex(method);
    map_generic(pattern, [=](application &app, booster::cmatch const &match) {
        std::string const asked = app.request().request_method();
        bool const allowed = plain ? asked == method : booster::regex_match(asked, method_expression);
        return allowed && h(app, match);
    });
}

void url_dispatcher::mount(std::string const &pattern, application &app, int part) {
    add(pattern, [&app, part](booster::cmatch const &match) {
        app.main(match[part]);
        return true;
    });
}

bool url_dispatcher::dispatch(std::string url) {
    booster::cmatch match;
    return std::any_of(rules_.begin(), rules_.end(), [&](rule const &rule) {
        return booster::regex_match(url.data(), url.data() + url.size(), match, rule.regex) &&
               rule.handle(match);
    });
}

}  // namespace cppcms

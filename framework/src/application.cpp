#include <cppcms/application.h>
#include <cppcms/base_content.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/filters.h>
#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>
#include <cppcms/views_pool.h>

#include <sstream>

#include "views_check.h"

namespace cppcms {

namespace {

/// To make a stream takes longer than to map a URL: each thread keeps one.
std::ostringstream &url_stream() {
    static thread_local std::ostringstream out;
    return out;
}

template <typename... Parameters>
std::string mapped(application &app, std::string const &key, Parameters const &...parameters) {
    if constexpr (sizeof...(parameters) == 0)
        return app.mapper().url(key, {});
    std::ostringstream &out = url_stream();
    if (auto const locale = app.context().locale(); out.getloc() != locale)
        out.imbue(locale);
    app.mapper().map(out, key, parameters...);
    std::string url = out.str();
    out.str({});
    return url;
}

}  // namespace

application::application(cppcms::service &srv)
    : service_(srv),
      dispatcher_(std::make_unique<url_dispatcher>(this)),
      mapper_(std::make_unique<url_mapper>(this)) {}

application::~application() {
    for (auto &child : children_)
        child.reset();
}

cppcms::service &application::service() {
    return service_;
}

json::value const &application::settings() {
    return service_.settings();
}

http::context &application::context() {
    auto const &context = root()->context_;
    if (!context)
        throw cppcms_error("Access to unassigned context");
    return *context;
}

http::request &application::request() {
    return context().request();
}

http::response &application::response() {
    return context().response();
}

url_dispatcher &application::dispatcher() {
    return *dispatcher_;
}

url_mapper &application::mapper() {
    return *mapper_;
}

void application::render(std::string const &view, base_content &content) {
    render(context().skin(), view, content);
}

void application::render(std::string const &skin, std::string const &view, base_content &content) {
    // Before the output is opened: a wrong view must still be able to end as the error page.
    impl::check_view(skin, view, content);
    render(skin, view, response().out(), content);
}

void application::render(std::string const &view, std::ostream &out, base_content &content) {
    render(has_context() ? context().skin() : service_.views_pool().default_skin(), view, out, content);
}

void application::render(std::string const &skin, std::string const &view, std::ostream &out,
                         base_content &content) {
    base_content::app_guard const guard(content, *this);
    service_.views_pool().render(skin, view, out, content);
}

void application::add(application &app) {
    app.parent_ = this;
}

void application::add(application &app, std::string const &regex, int part) {
    add(app);
    dispatcher().mount(regex, app, part);
}

void application::add(application &app, std::string const &name, std::string const &url) {
    add(app);
    mapper().mount(name, url, app);
}

void application::add(application &app, std::string const &name, std::string const &url,
                      std::string const &regex, int part) {
    add(app, regex, part);
    mapper().mount(name, url, app);
}

void application::attach(application *app) {
    children_.emplace_back(app);
    add(*app);
}

void application::attach(application *app, std::string const &regex, int part) {
    attach(app);
    dispatcher().mount(regex, *app, part);
}

void application::attach(application *app, std::string const &name, std::string const &url) {
    attach(app);
    mapper().mount(name, url, *app);
}

void application::attach(application *app, std::string const &name, std::string const &url,
                         std::string const &regex, int part) {
    attach(app, regex, part);
    mapper().mount(name, url, *app);
}

application *application::parent() {
    return parent_ ? parent_ : this;
}

application *application::root() {
    application *node = this;
    while (node->parent_)
        node = node->parent_;
    return node;
}

booster::shared_ptr<http::context> application::get_context() {
    return root()->context_;
}

booster::shared_ptr<http::context> application::release_context() {
    return std::exchange(root()->context_, nullptr);
}

void application::assign_context(booster::shared_ptr<http::context> context) {
    root()->context_ = std::move(context);
}

bool application::has_context() {
    return root()->context_ != nullptr;
}

bool application::owns_context() {
    return has_context();
}

bool application::is_asynchronous() {
    return asynchronous_;
}

void application::main(std::string url) {
    if (!dispatcher().dispatch(std::move(url)))
        response().make_error_response(http::response::not_found);
}

void application::init() {}

void application::clear() {}

std::string application::translate(char const *message) {
    return booster::locale::translate(message).str(context().locale());
}

std::string application::translate(char const *message_context, char const *message) {
    return booster::locale::translate(message_context, message).str(context().locale());
}

std::string application::translate(char const *single, char const *plural, int n) {
    return booster::locale::translate(single, plural, n).str(context().locale());
}

std::string application::translate(char const *message_context, char const *single, char const *plural,
                                   int n) {
    return booster::locale::translate(message_context, single, plural, n).str(context().locale());
}

std::string application::url(std::string const &key) {
    return mapped(*this, key);
}

std::string application::url(std::string const &key, filters::streamable const &p1) {
    return mapped(*this, key, p1);
}

std::string application::url(std::string const &key, filters::streamable const &p1,
                             filters::streamable const &p2) {
    return mapped(*this, key, p1, p2);
}

std::string application::url(std::string const &key, filters::streamable const &p1,
                             filters::streamable const &p2, filters::streamable const &p3) {
    return mapped(*this, key, p1, p2, p3);
}

std::string application::url(std::string const &key, filters::streamable const &p1,
                             filters::streamable const &p2, filters::streamable const &p3,
                             filters::streamable const &p4) {
    return mapped(*this, key, p1, p2, p3, p4);
}

std::string application::url(std::string const &key, filters::streamable const &p1,
                             filters::streamable const &p2, filters::streamable const &p3,
                             filters::streamable const &p4, filters::streamable const &p5) {
    return mapped(*this, key, p1, p2, p3, p4, p5);
}

std::string application::url(std::string const &key, filters::streamable const &p1,
                             filters::streamable const &p2, filters::streamable const &p3,
                             filters::streamable const &p4, filters::streamable const &p5,
                             filters::streamable const &p6) {
    return mapped(*this, key, p1, p2, p3, p4, p5, p6);
}

}  // namespace cppcms

namespace booster {

// The whole tree lives and dies with its root, so references to any node count there.

void intrusive_ptr_add_ref(cppcms::application *p) {
    ++p->root()->references_;
}

void intrusive_ptr_release(cppcms::application *p) {
    cppcms::application *const root = p->root();
    if (--root->references_ == 0)
        delete root;
}

}  // namespace booster

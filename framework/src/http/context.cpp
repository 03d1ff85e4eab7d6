#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/service.h>
#include <cppcms/views_pool.h>
#include <service/service_impl.h>

#include <ostream>
#include <utility>

#include "body_reader.h"
#include "environment.h"

namespace cppcms::http {

namespace {

constexpr char busy_text[] = "Others upload files at the moment. Try again in half a minute.";
constexpr int busy_seconds = 30;

}  // namespace

struct context::data {
    cppcms::service &srv;
    std::locale locale;
    std::string skin;
    // Behind the connection in order, as both refer to it.
    std::unique_ptr<impl::connection> connection;
    std::unique_ptr<http::request> request;
    std::unique_ptr<http::response> response;
    booster::function<void()> on_peer_reset;
    bool body_is_read = false;
    std::shared_ptr<void> place;  // among the large bodies
};

context::context(cppcms::service &srv, std::unique_ptr<impl::connection> from, impl::environment &&variables)
    : d(new data{
          srv, srv.locale(), srv.views_pool().default_skin(), std::move(from), {}, {}, {}, false, {}}) {
    impl::cached_settings const &cached = srv.impl()->cached();
    d->request.reset(new http::request(std::move(variables), cached.limits));
    d->response.reset(new http::response(*this, *d->connection, cached.response));
}

context::~context() = default;

http::request &context::request() {
    return *d->request;
}

http::response &context::response() {
    return *d->response;
}

json::value const &context::settings() {
    return d->srv.settings();
}

cppcms::service &context::service() {
    return d->srv;
}

std::locale context::locale() {
    return d->locale;
}

void context::locale(std::string const &name) {
    locale(d->srv.locale(name));
}

void context::locale(std::locale const &l) {
    d->locale = l;
    d->response->imbue(l);
}

std::string context::skin() {
    return d->skin;
}

void context::skin(std::string const &name) {
    d->skin = name;
}

void context::complete_response() {
    if (!d->connection)
        return;
    if (!d->response->end() && d->on_peer_reset)
        d->srv.post(std::exchange(d->on_peer_reset, nullptr));
    d->srv.impl()->release(std::exchange(d->connection, nullptr));
}

void context::async_complete_response() {
    complete_response();
}

void context::async_flush_output(handler const &h) {
    bool const sent = d->connection && d->response->flush();
    d->srv.post([h, sent] { h(sent ? operation_completed : operation_aborted); });
}

void context::async_on_peer_reset(booster::function<void()> const &h) {
    d->on_peer_reset = h;
}

impl::environment const &context::environment() {
    return d->request->variables();
}

bool context::load(impl::refusal &problem) {
    impl::service &srv = *d->srv.impl();
    if (!d->place && srv.is_large_body(d->request->content_length())) {
        d->place = srv.large_bodies().enter();
        if (!d->place) {
            problem = {http::response::service_unavailable, "too many large bodies at once", busy_text,
                       busy_seconds};
            return true;
        }
    }
    bool const loaded = d->request->load(*d->connection, problem);
    d->body_is_read = loaded && !problem;
    return loaded;
}

void context::await_body(booster::function<void()> const &resume) {
    impl::body_reader const &body = d->request->body();
    d->srv.impl()->await_input(*d->connection, body.deadline(), body.has_more(), resume);
}

void context::refuse(impl::refusal const &problem) {
    d->response->set_header("Connection", "close");
    if (problem.retry_after > 0)
        d->response->set_header("Retry-After", std::to_string(problem.retry_after));
    // Where no body was announced, its end may not have been looked for.
    if (d->body_is_read || (d->request->content_length() == 0 &&
                            d->connection->read_body().state == impl::connection::input::complete))
        d->connection->close_after_request();
    else
        d->connection->abandon_body();
    d->response->make_error_response(problem.status, problem.message);
    complete_response();
}

}  // namespace cppcms::http

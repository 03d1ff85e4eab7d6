#include <cppcms/http_file.h>
#include <cppcms/http_request.h>
#include <fronts/connection.h>

#include <charconv>
#include <optional>

#include "body_reader.h"
#include "environment.h"
#include "form_decoder.h"

namespace cppcms::http {

namespace {

/// The decimal number \a text, 0 where it is none.
template <typename Number>
Number number(std::string_view text) {
    Number value = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

std::string single_value(request::form_type const &fields, std::string const &name) {
    auto const [first, last] = fields.equal_range(name);
    return first != last && std::next(first) == last ? first->second : std::string();
}

}  // namespace

struct request::data {
    impl::environment variables;
    impl::body_limits const &limits;
    form_type query;
    impl::body_content body;
    std::optional<impl::body_reader> reader;
};

request::request(impl::environment &&variables, impl::body_limits const &limits)
    : d(new data{std::move(variables), limits, {}, {}, {}}) {}

request::~request() = default;

impl::environment &request::variables() {
    return d->variables;
}

bool request::load(impl::connection &from, impl::refusal &problem) {
    if (!d->reader) {
        switch (impl::decode_form(d->variables.get("QUERY_STRING"), d->query)) {
            case impl::form_result::complete:
                break;
            case impl::form_result::malformed:
                d->query.clear();
                break;
            case impl::form_result::too_many:
                problem = {400, "too many fields in the query"};
                return true;
        }
        d->reader.emplace(content_type_parsed(), content_length(), d->limits, d->body);
    }
    return d->reader->take(from, problem);
}

impl::body_reader const &request::body() const {
    return *d->reader;
}

unsigned long long request::content_length() {
    return number<unsigned long long>(d->variables.get("CONTENT_LENGTH"));
}

http::content_type request::content_type_parsed() {
    return http::content_type(d->variables.get("CONTENT_TYPE"));
}

unsigned request::server_port() {
    return number<unsigned>(d->variables.get("SERVER_PORT"));
}

std::string request::getenv(std::string const &name) {
    return std::string(d->variables.get(name));
}

std::string request::getenv(char const *name) {
    return std::string(d->variables.get(name));
}

char const *request::cgetenv(char const *name) {
    return d->variables.get(name).data();
}

std::map<std::string, std::string> request::getenv() {
    return d->variables.all();
}

request::form_type const &request::get() {
    return d->query;
}

request::form_type const &request::post() {
    return d->body.fields;
}

request::form_type const &request::post_or_get() {
    return d->variables.get("REQUEST_METHOD") == "POST" ? post() : get();
}

std::string request::get(std::string const &name) {
    return single_value(get(), name);
}

std::string request::post(std::string const &name) {
    return single_value(post(), name);
}

request::files_type request::files() {
    return d->body.files;
}

std::pair<void *, std::size_t> request::raw_post_data() {
    return {d->body.raw.data(), d->body.raw.size()};
}

}  // namespace cppcms::http

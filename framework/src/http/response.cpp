#include <booster/locale.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <service/cached_settings.h>

#include <algorithm>
#include <array>
#include <optional>
#include <ostream>
#include <sstream>
#include <vector>

#include "header_text.h"
#include "output_buffer.h"

namespace cppcms::http {

namespace {

/// A line break would let whoever supplied the value write headers of his own.
std::string single_line(std::string value) {
    std::replace_if(
        value.begin(), value.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; }, ' ');
    return value;
}

constexpr bool is_raw(response::io_mode_type mode) {
    return mode == response::raw || mode == response::asynchronous_raw;
}

constexpr bool is_asynchronous(response::io_mode_type mode) {
    return mode == response::asynchronous || mode == response::asynchronous_raw;
}

}  // namespace

struct response::data {
    data(context &c, impl::connection &connection, impl::response_settings const &from)
        : ctx(c), to(connection), settings(from), headers(from.headers) {}

    context &ctx;
    impl::connection &to;
    impl::response_settings const &settings;
    impl::header_map headers;
    std::vector<std::string> added_lines;
    io_mode_type mode = normal;
    std::size_t buffer_size = 0;  // 0: the default
    bool finalized = false;
    bool sent = false;
    std::optional<impl::output_buffer> buffer;
    std::optional<std::ostream> stream;

    bool is_gzip_wanted() const;
    std::string header_block();
    void open();
};

bool response::data::is_gzip_wanted() const {
    if (mode != normal || !settings.gzip_level || headers.contains("Content-Encoding"))
        return false;
    auto const type = headers.find("Content-Type");
    return type != headers.end() && type->second.starts_with("text/") &&
           std::string_view(ctx.request().cgetenv("HTTP_ACCEPT_ENCODING")).find("gzip") !=
               std::string_view::npos;
}

std::string response::data::header_block() {
    std::string block;
    block.reserve(256);
    for (auto const &[name, value] : headers) {
        if (settings.http_status_line && impl::equal_ignoring_case(name, "Status"))
            continue;
        block.append(name).append(": ").append(value).append("\r\n");
    }
    for (std::string const &line : added_lines)
        block.append(line).append("\r\n");
    block.append("\r\n");
    if (!settings.http_status_line)
        return block;
    auto const status = headers.find("Status");
    return "HTTP/1.0 " + (status == headers.end() ? std::string("200 Ok") : status->second) + "\r\n" + block;
}

void response::data::open() {
    impl::output_buffer::options how{settings.buffer_size, is_asynchronous(mode), {}};
    if (how.hold_all)
        how.size = settings.async_buffer_size;
    if (buffer_size > 0)
        how.size = buffer_size;
    if (is_gzip_wanted()) {
        how.gzip_level = settings.gzip_level;
        headers.insert_or_assign("Content-Encoding", "gzip");
        headers.erase("Content-Length");
    }
    buffer.emplace(to, is_raw(mode) ? std::string() : header_block(), how);
    stream.emplace(&*buffer);
    stream->imbue(ctx.locale());
}

response::response(context &ctx, impl::connection &to, impl::response_settings const &settings)
    : d(std::make_unique<data>(ctx, to, settings)) {
    set_html_header();
}

response::~response() = default;

void response::set_header(std::string const &name, std::string const &value) {
    if (value.empty()) {
        erase_header(name);
        return;
    }
    auto const [at, added] = d->headers.try_emplace(single_line(name));
    at->second = single_line(value);
}

void response::erase_header(std::string const &name) {
    d->headers.erase(name);
}

std::string response::get_header(std::string const &name) {
    auto const found = d->headers.find(name);
    return found == d->headers.end() ? std::string() : found->second;
}

void response::add_header(std::string const &name, std::string const &value) {
    if (impl::equal_ignoring_case(name, "Status") || impl::equal_ignoring_case(name, "Content-Length"))
        set_header(name, value);
    else
        d->added_lines.push_back(single_line(name + ": " + value));
}

void response::status(int code) {
    status(code, status_to_string(code));
}

void response::status(int code, std::string const &reason) {
    if (code == ok)
        erase_header("Status");
    else
        set_header("Status", std::to_string(code) + ' ' + reason);
}

void response::set_redirect_header(std::string const &location, int status) {
    this->location(location);
    this->status(status);
}

void response::set_content_header(std::string const &type) {
    if (!d->settings.charset_in_content_type) {
        content_type(type);
        return;
    }
    auto const &locale_info = std::use_facet<booster::locale::info>(d->ctx.locale());
    content_type(type + "; charset=" + impl::to_lower(locale_info.encoding()));
}

void response::set_html_header() {
    set_content_header("text/html");
}

void response::set_xhtml_header() {
    set_content_header("text/xhtml");
}

void response::set_plain_text_header() {
    set_content_header("text/plain");
}

void response::make_error_response(int status, std::string const &message) {
    this->status(status);
    make_error_response_html_body(status, out(), message);
}

response::io_mode_type response::io_mode() {
    return d->mode;
}

void response::io_mode(io_mode_type mode) {
    if (d->buffer)
        throw cppcms_error("Can't set mode after requesting output stream");
    d->mode = mode;
}

std::ostream &response::out() {
    if (d->finalized)
        throw cppcms_error("Request for output stream for finalized request is illegal");
    if (!d->buffer)
        d->open();
    return *d->stream;
}

void response::setbuf(int size) {
    d->buffer_size = size < 0 ? 0 : std::max<std::size_t>(1, static_cast<std::size_t>(size));
    if (d->buffer)
        d->buffer->resize(d->buffer_size > 0 ? d->buffer_size : d->settings.buffer_size);
}

void response::finalize() {
    end();
}

bool response::end() {
    if (!d->finalized) {
        out();
        d->finalized = true;
        d->sent = d->buffer->close();
    }
    return d->sent;
}

bool response::flush() {
    out();
    return d->buffer->flush();
}

void response::imbue(std::locale const &l) {
    if (d->stream)
        d->stream->imbue(l);
}

bool response::some_output_was_written() {
    return d->buffer.has_value();
}

std::string response::make_http_time(std::time_t when) {
    constexpr std::array days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm parts{};
    gmtime_r(&when, &parts);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s, %02d %s %04d %02d:%02d:%02d GMT",
                  days[static_cast<std::size_t>(parts.tm_wday)], parts.tm_mday,
                  months[static_cast<std::size_t>(parts.tm_mon)], parts.tm_year + 1900, parts.tm_hour,
                  parts.tm_min, parts.tm_sec);
    return text.data();
}

}  // namespace cppcms::http

#include "http_connection.h"

#include <arpa/inet.h>
#include <booster/log.h>
#include <cppcms/util.h>
#include <http/environment.h>
#include <http/header_text.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <utility>

namespace cppcms::impl {

namespace beast_http = boost::beast::http;

namespace {

constexpr char server_software[] = "CppCMS-Embedded/2.0.1";
constexpr char bad_request_line[] = "HTTP/1.0 400 Bad Request\r\n";
constexpr char length_required_line[] = "HTTP/1.0 411 Length Required\r\n";
constexpr std::size_t receive_size = 8192;
constexpr std::size_t body_receive_size = 32768;

std::string_view view(boost::beast::string_view text) {
    return {text.data(), text.size()};
}

std::string address_of(int socket) {
    sockaddr_storage storage{};
    socklen_t size = sizeof(storage);
    std::array<char, INET6_ADDRSTRLEN> text{};
    auto *const address = reinterpret_cast<sockaddr *>(&storage);
    if (::getpeername(socket, address, &size) != 0)
        return {};
    void const *const bytes =
        address->sa_family == AF_INET6
            ? static_cast<void const *>(&reinterpret_cast<sockaddr_in6 const *>(address)->sin6_addr)
            : static_cast<void const *>(&reinterpret_cast<sockaddr_in const *>(address)->sin_addr);
    return ::inet_ntop(address->sa_family, bytes, text.data(), text.size()) ? text.data() : "";
}

/// `Accept-Language` becomes HTTP_ACCEPT_LANGUAGE.
std::string variable_name(std::string_view header) {
    std::string name = "HTTP_";
    for (char const c : header)
        name += c == '-' ? '_' : (c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
    return name;
}

/// Unlike in a query, a plus sign in a path is one.
std::string decode_path(std::string_view path) {
    std::string text;
    for (char const c : path)
        if (c == '+')
            text += "%2B";
        else
            text += c;
    return util::urldecode(text);
}

/// Length of the header block in \a text with the empty line that ends it, 0 where that is not there.
std::size_t header_block_size(std::string_view text) {
    auto const unix_end = text.find("\n\n");
    auto const end = text.find("\r\n\r\n");
    if (end != std::string_view::npos && end < unix_end)
        return end + 4;
    return unix_end == std::string_view::npos ? 0 : unix_end + 2;
}

std::string hex(std::size_t number) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "%zx", number);
    return text.data();
}

}  // namespace

http_connection::http_connection(int descriptor, connection_registry &registry,
                                 std::shared_ptr<http_front const> front)
    : connection(descriptor, registry, front->timeout), front_(std::move(front)) {}

connection::input http_connection::read_head(environment &variables) {
    for (;;) {
        if (input_.size() > 0) {
            input const state = parse_head(variables);
            if (state != input::incomplete)
                return state;
        }
        if (input const got = receive(input_, receive_size); got != input::complete)
            return got;
    }
}

connection::input http_connection::parse_head(environment &variables) {
    if (!parser_) {
        parser_.emplace();
        parser_->header_limit(max_head);
        parser_->body_limit(std::numeric_limits<std::uint64_t>::max());
    }
    boost::beast::error_code error;
    input_.consume(parser_->put(input_.data(), error));
    if (error == beast_http::error::need_more)
        return input::incomplete;
    if (error)
        return reject(bad_request_line, error.message());
    if (view(parser_->get().target()).substr(0, 1) != "/")
        return reject(bad_request_line, "a target that is no path");
    if (parser_->chunked())
        return reject(length_required_line, "a body of unknown length");
    describe(variables);
    return input::complete;
}

connection::input http_connection::reject(char const *status_line, std::string_view problem) {
    BOOSTER_WARNING("cppcms") << "HTTP request refused: " << problem;
    send({status_line, front_->headers, "\r\n"});
    abandon_body();
    return input::closed;
}

void http_connection::describe(environment &variables) {
    auto const &message = parser_->get();
    std::string const address = address_of(descriptor());
    variables.add("GATEWAY_INTERFACE", "CGI/1.0");
    variables.add("SERVER_SOFTWARE", server_software);
    variables.add("SERVER_NAME", front_->server_name);
    variables.add("SERVER_PORT", std::to_string(front_->port));
    variables.add("SERVER_PROTOCOL", message.version() == 10 ? "HTTP/1.0" : "HTTP/1.1");
    variables.add("REMOTE_ADDR", address);
    variables.add("REMOTE_HOST", address);
    variables.add("REQUEST_METHOD", view(message.method_string()));
    describe_path(variables, view(message.target()));

    std::string const no_header;
    for (auto field = message.begin(); field != message.end(); ++field) {
        std::string_view const name = view(field->name_string());
        if (message.find(field->name_string()) != field)
            continue;  // repeated: joined with the first one
        std::string value;
        for (auto [same, end] = message.equal_range(field->name_string()); same != end; ++same)
            value.append(value.empty() ? "" : (equal_ignoring_case(name, "Cookie") ? "; " : ", "))
                .append(view(same->value()));
        if (equal_ignoring_case(name, "Content-Length"))
            variables.add("CONTENT_LENGTH", value);
        else if (equal_ignoring_case(name, "Content-Type"))
            variables.add("CONTENT_TYPE", value);
        else
            variables.add(variable_name(name), value);
    }

    body_left_ = parser_->content_length().value_or(0);
    continue_expected_ = equal_ignoring_case(view(message[beast_http::field::expect]), "100-continue");
    // A response to HEAD has a body here, which only the end of the connection tells from what follows.
    keep_alive_ = equal_ignoring_case(view(message[beast_http::field::connection]), "keep-alive") &&
                  message.method() != beast_http::verb::head;
}

void http_connection::describe_path(environment &variables, std::string_view target) {
    auto const question = target.find('?');
    if (question != std::string_view::npos)
        variables.add("QUERY_STRING", target.substr(question + 1));
    std::string_view path = target.substr(0, question);
    auto const script =
        std::find_if(front_->script_names.begin(), front_->script_names.end(), [&](auto const &name) {
            return path.starts_with(name) && (path.size() == name.size() || path[name.size()] == '/');
        });
    if (script != front_->script_names.end()) {
        variables.add("SCRIPT_NAME", *script);
        path.remove_prefix(script->size());
    }
    variables.add("PATH_INFO", decode_path(path));
}

connection::piece http_connection::read_body() {
    input_.consume(std::exchange(given_, 0));
    if (body_left_ == 0)
        return {input::complete, {}};
    if (input_.size() == 0) {
        if (std::exchange(continue_expected_, false))
            send({"HTTP/1.1 100 Continue\r\n\r\n"});
        if (input const got = receive(input_, body_receive_size); got != input::complete)
            return {got, {}};
    }
    given_ = static_cast<std::size_t>(std::min<unsigned long long>(input_.size(), body_left_));
    body_left_ -= given_;
    return {input::incomplete, {static_cast<char const *>(input_.data().data()), given_}};
}

bool http_connection::write(std::string_view first, std::string_view second, chunk kind) {
    if (framing_ != framing::undecided)
        return send_body(std::string(first), second, kind);
    std::size_t size = first.empty() || !pending_.empty() ? 0 : header_block_size(first);
    if (size > 0 && size == first.size())
        return begin_response(first, second, kind);

    // The application writes the header block itself: it may come in pieces.
    pending_.append(first).append(second);
    size = header_block_size(pending_);
    if (size == 0 && kind != chunk::last && pending_.size() < max_head)
        return true;
    std::string const text = std::move(pending_);
    return begin_response(std::string_view(text).substr(0, size), std::string_view(text).substr(size), kind);
}

bool http_connection::begin_response(std::string_view block, std::string_view body, chunk kind) {
    std::string status = "200 Ok";
    std::string headers;
    bool has_length = false;
    while (!block.empty()) {
        auto line = block.substr(0, block.find('\n'));
        block.remove_prefix(std::min(block.size(), line.size() + 1));
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        auto const name = line.substr(0, line.find(':'));
        if (name.size() == line.size() || equal_ignoring_case(name, "Connection"))
            continue;
        if (equal_ignoring_case(name, "Status")) {
            status = trim(line.substr(name.size() + 1));
            continue;
        }
        has_length = has_length || equal_ignoring_case(name, "Content-Length");
        headers.append(line).append("\r\n");
    }

    keep_alive_ = keep_alive_ && !is_last_request();
    if (has_length || kind == chunk::last)
        framing_ = framing::length;
    else if (keep_alive_ && parser_->get().version() >= 11)
        framing_ = framing::chunked;
    else
        framing_ = framing::close;
    keep_alive_ = keep_alive_ && framing_ != framing::close;

    std::string head = "HTTP/1.1 " + status + "\r\n";
    if (front_->names_itself)
        head += std::string("Server: ") + server_software + "\r\n";
    head += keep_alive_ ? "Connection: keep-alive\r\n" : "Connection: close\r\n";
    if (!has_length && framing_ == framing::length)
        head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    if (framing_ == framing::chunked)
        head += "Transfer-Encoding: chunked\r\n";
    return send_body(head + headers + "\r\n", body, kind);
}

/// Sends \a body, which may be nothing, behind \a prefix.
bool http_connection::send_body(std::string prefix, std::string_view body, chunk kind) {
    char const *const last_chunk = framing_ == framing::chunked && kind == chunk::last ? "0\r\n\r\n" : "";
    char const *const chunk_end = framing_ == framing::chunked && !body.empty() ? "\r\n" : "";
    if (*chunk_end)
        prefix += hex(body.size()) + "\r\n";
    failed_ = failed_ || !send({prefix, body, chunk_end, last_chunk});
    return !failed_;
}

bool http_connection::finish() {
    bool const keep = keep_alive_ && !failed_ && !is_last_request() && body_left_ == 0;
    input_.consume(std::exchange(given_, 0));
    parser_.reset();
    framing_ = framing::undecided;
    pending_.clear();
    return keep;
}

}  // namespace cppcms::impl

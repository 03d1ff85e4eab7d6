#include "request_rules.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>

#include "environment.h"
#include "header_text.h"

namespace cppcms::impl {

namespace {

constexpr char local_host[] = "localhost";
constexpr char http_port[] = "80";
constexpr char https_port[] = "443";
constexpr std::size_t max_quoted = 200;  // bytes of a client's text in the log

constexpr char foreign_text[] = "This was sent by a page of another site.";
constexpr char unknown_host_text[] =
    "This device does not go by the name in the address. Ask for it by its IP address, or add the name to "
    "its "
    "configuration.";

struct authority {
    std::string host;  // in lower case, an IPv6 address in brackets and in its shortest form
    std::string port;  // empty for the one that the scheme has by itself

    bool operator==(authority const &) const = default;
};

struct origin {
    std::string scheme;
    authority from;
};

/// The address in brackets, in its shortest form; empty where it is none.
std::string ipv6_of(std::string_view bracketed) {
    in6_addr address{};
    std::array<char, INET6_ADDRSTRLEN> text{};
    std::string const inner(bracketed.substr(1, bracketed.size() - 2));
    if (::inet_pton(AF_INET6, inner.c_str(), &address) != 1)
        return {};
    return ::inet_ntop(AF_INET6, &address, text.data(), text.size()) ? '[' + std::string(text.data()) + ']'
                                                                     : std::string();
}

bool is_ipv4(std::string const &host) {
    in_addr address{};
    return ::inet_pton(AF_INET, host.c_str(), &address) == 1;
}

/// Reads "host[:port]". Nothing where it is something else.
std::optional<authority> parse_authority(std::string_view text, std::string_view usual_port) {
    bool const bracketed = text.starts_with('[');
    auto const end = bracketed ? text.find(']') : text.find(':');
    if ((bracketed && end == std::string_view::npos) || text.find('\0') != std::string_view::npos)
        return {};
    std::string_view const host = text.substr(0, bracketed ? end + 1 : end);
    std::string_view port = text.substr(std::min(text.size(), host.size()));
    if (port.starts_with(':'))
        port.remove_prefix(1);
    else if (!port.empty())
        return {};
    authority result{bracketed ? ipv6_of(host) : to_lower(host), std::string(port == usual_port ? "" : port)};
    if (result.host.ends_with('.'))
        result.host.pop_back();
    if (result.host.empty() || result.port.find_first_not_of("0123456789") != std::string::npos)
        return {};
    return result;
}

/// Reads the beginning of a URL. Nothing where it has no authority, as "null".
std::optional<origin> parse_origin(std::string_view url) {
    auto const colon = url.find("://");
    if (colon == std::string_view::npos)
        return {};
    origin result{to_lower(url.substr(0, colon)), {}};
    url.remove_prefix(colon + 3);
    char const *const port = result.scheme == "https" ? https_port : result.scheme == "http" ? http_port : "";
    auto const from = parse_authority(url.substr(0, url.find_first_of("/?#")), port);
    if (!from)
        return {};
    result.from = *from;
    return result;
}

/// Whether a page at \a url may have sent the request. Over TLS one that came without may not: others on the
/// way could have made it.
bool is_own_page(std::string_view url, environment const &request) {
    bool const tls = equal_ignoring_case(request.get("HTTPS"), "on");
    auto const page = parse_origin(url);
    auto const own = parse_authority(request.get("HTTP_HOST"), tls ? https_port : http_port);
    return page && own && page->from == *own && (!tls || page->scheme == "https");
}

/// What tells that a page of another site sends the request; empty where nothing does.
std::string_view foreign_sender(environment const &request) {
    std::string_view const origin = request.get("HTTP_ORIGIN");
    std::string_view const page = origin.empty() ? request.get("HTTP_REFERER") : origin;
    if (!page.empty() && !is_own_page(page, request))
        return page;
    std::string_view const site = request.get("HTTP_SEC_FETCH_SITE");
    return site == "cross-site" || site == "same-site" ? site : "";
}

/// \a text for the log: in quotes, without what could end them or the line, and of bounded length.
std::string quoted(std::string_view text) {
    bool const cut = text.size() > max_quoted;
    std::string result(text.substr(0, max_quoted));
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c < ' ' || c > '~' || c == '"'; }, '?');
    return '"' + result + (cut ? "...\"" : "\"");
}

std::string description(environment const &request) {
    return quoted(request.get("REQUEST_METHOD")) + ' ' + quoted(request.get("PATH_INFO")) + " from " +
           quoted(request.get("REMOTE_ADDR"));
}

std::string machine_name() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? to_lower(name.data()) : std::string();
}

}  // namespace

request_rules::request_rules(json::value const &settings)
    : same_origin_(settings.get("http.same_origin", false)),
      same_origin_paths_(settings.get("http.same_origin_paths", std::vector<std::string>())) {
    if (settings.find("http.hosts").is_undefined())
        return;
    hosts_ = settings.get<std::vector<std::string>>("http.hosts");
    for (std::string &host : *hosts_)
        host = to_lower(host);
}

refusal request_rules::check(environment const &request) const {
    std::string_view const host = request.get("HTTP_HOST");
    // Without a host, as HTTP 1.0 allows, nobody was led here by a name.
    if (hosts_ && !host.empty() && !is_ours(host))
        return {421, description(request) + ": asked by the name " + quoted(host), unknown_host_text};
    if (same_origin_ && is_guarded(request))
        if (std::string_view const sender = foreign_sender(request); !sender.empty())
            return {403, description(request) + ": sent by another site, " + quoted(sender), foreign_text};
    return {};
}

bool request_rules::is_guarded(environment const &request) const {
    std::string_view const method = request.get("REQUEST_METHOD");
    std::string_view const path = request.get("PATH_INFO");
    return (method != "GET" && method != "HEAD") ||
           std::any_of(same_origin_paths_.begin(), same_origin_paths_.end(),
                       [path](std::string const &guarded) { return path.starts_with(guarded); });
}

bool request_rules::is_ours(std::string_view host) const {
    auto const asked = parse_authority(host, "");
    if (!asked)
        return false;
    std::string const &name = asked->host;
    return name.starts_with('[') || is_ipv4(name) || name == local_host || name == machine_name() ||
           std::find(hosts_->begin(), hosts_->end(), name) != hosts_->end();
}

}  // namespace cppcms::impl

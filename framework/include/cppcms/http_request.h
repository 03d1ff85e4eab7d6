#pragma once

#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>
#include <cppcms/http_content_type.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace cppcms {

namespace impl {
class body_reader;
class connection;
class environment;
struct body_limits;
struct refusal;
}  // namespace impl

namespace http {

class file;
class context;

/// What the client sent: the CGI variables, the fields of the query and of the body, and the files.
class request : public booster::noncopyable {
  public:
    typedef std::multimap<std::string, std::string> form_type;
    typedef std::vector<booster::shared_ptr<file>> files_type;

    ~request();

    // CGI variables; "" (or 0) where one is not set.

    std::string auth_type() { return getenv("AUTH_TYPE"); }
    unsigned long long content_length();
    std::string content_type() { return getenv("CONTENT_TYPE"); }
    http::content_type content_type_parsed();
    std::string gateway_interface() { return getenv("GATEWAY_INTERFACE"); }
    std::string path_info() { return getenv("PATH_INFO"); }
    std::string path_translated() { return getenv("PATH_TRANSLATED"); }
    std::string query_string() { return getenv("QUERY_STRING"); }
    std::string remote_addr() { return getenv("REMOTE_ADDR"); }
    std::string remote_host() { return getenv("REMOTE_HOST"); }
    std::string remote_user() { return getenv("REMOTE_USER"); }
    std::string request_method() { return getenv("REQUEST_METHOD"); }
    std::string script_name() { return getenv("SCRIPT_NAME"); }
    std::string server_name() { return getenv("SERVER_NAME"); }
    unsigned server_port();
    std::string server_protocol() { return getenv("SERVER_PROTOCOL"); }
    std::string server_software() { return getenv("SERVER_SOFTWARE"); }

    std::string http_accept() { return getenv("HTTP_ACCEPT"); }
    std::string http_accept_language() { return getenv("HTTP_ACCEPT_LANGUAGE"); }
    std::string http_cookie() { return getenv("HTTP_COOKIE"); }
    std::string http_host() { return getenv("HTTP_HOST"); }
    std::string http_referer() { return getenv("HTTP_REFERER"); }
    std::string http_user_agent() { return getenv("HTTP_USER_AGENT"); }

    std::string getenv(std::string const &name);
    std::string getenv(char const *name);
    /// Never a null pointer.
    char const *cgetenv(char const *name);
    std::map<std::string, std::string> getenv();

    /// Fields of the query. All of them are dropped where one is malformed.
    form_type const &get();
    /// Fields of the body, files apart.
    form_type const &post();
    /// post() for the method POST, else get().
    form_type const &post_or_get();
    /// The value of a field; "" where it is missing and where it occurs more than once.
    std::string get(std::string const &name);
    std::string post(std::string const &name);

    /// The parts of a multipart body that have a media type.
    files_type files();
    /// The body as it came, unless it was multipart.
    std::pair<void *, std::size_t> raw_post_data();

  private:
    friend class context;

    request(impl::environment &&variables, impl::body_limits const &limits);
    impl::environment &variables();
    /// Takes in the query and what has come of the body; see impl::body_reader.
    bool load(impl::connection &from, impl::refusal &problem);
    impl::body_reader const &body() const;

    struct data;
    std::unique_ptr<data> d;
};

}  // namespace http

}  // namespace cppcms

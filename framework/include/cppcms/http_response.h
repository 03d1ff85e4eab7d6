#pragma once

#include <booster/noncopyable.h>

#include <ctime>
#include <iosfwd>
#include <locale>
#include <memory>
#include <string>

namespace cppcms {

namespace impl {
class connection;
struct response_settings;
}  // namespace impl

namespace http {

class context;

/// What is answered: status, headers and the output stream. The first call of out() fixes status and
/// headers; later changes of them have no effect.
class response : public booster::noncopyable {
  public:
    enum status_type {
        continue_request = 100,
        switching_protocols = 101,
        ok = 200,
        created = 201,
        accepted = 202,
        non_authoritative_information = 203,
        no_content = 204,
        reset_content = 205,
        partial_content = 206,
        multiple_choices = 300,
        moved_permanently = 301,
        found = 302,
        see_other = 303,
        not_modified = 304,
        use_proxy = 305,
        temporary_redirect = 307,
        bad_request = 400,
        unauthorized = 401,
        payment_required = 402,
        forbidden = 403,
        not_found = 404,
        method_not_allowed = 405,
        not_acceptable = 406,
        proxy_authentication_required = 407,
        request_time_out = 408,
        conflict = 409,
        gone = 410,
        precondition_failed = 412,
        request_entity_too_large = 413,
        request_uri_too_large = 414,
        unsupported_media_type = 415,
        requested_range_not_satisfiable = 416,
        expectation_failed = 417,
        internal_server_error = 500,
        not_implemented = 501,
        bad_gateway = 502,
        service_unavailable = 503,
        gateway_time_out = 504,
        http_version_not_supported = 505
    };

    enum io_mode_type {
        normal,            ///< may be compressed
        nogzip,            ///< never compressed
        raw,               ///< the application writes the header block itself
        asynchronous,      ///< all output is held until the response is complete
        asynchronous_raw,  ///< both
    };

    ~response();

    // Headers. Names compare without regard to letter case.

    /// An empty value erases the header.
    void set_header(std::string const &name, std::string const &value);
    void erase_header(std::string const &name);
    /// "" where it is not set.
    std::string get_header(std::string const &name);
    /// Adds a line, whether the header is there already or not. Status and Content-Length are set instead.
    void add_header(std::string const &name, std::string const &value);

    void status(int code);
    void status(int code, std::string const &reason);
    void set_redirect_header(std::string const &location, int status = found);
    /// \a type with the character set of the request's locale.
    void set_content_header(std::string const &type);
    void set_html_header();
    void set_xhtml_header();
    void set_plain_text_header();

    void cache_control(std::string const &value) { set_header("Cache-Control", value); }
    void content_length(unsigned long long bytes) { set_header("Content-Length", std::to_string(bytes)); }
    void content_type(std::string const &value) { set_header("Content-Type", value); }
    void date(std::time_t when) { set_header("Date", make_http_time(when)); }
    void etag(std::string const &value) { set_header("ETag", value); }
    void expires(std::time_t when) { set_header("Expires", make_http_time(when)); }
    void last_modified(std::time_t when) { set_header("Last-Modified", make_http_time(when)); }
    void location(std::string const &value) { set_header("Location", value); }
    void pragma(std::string const &value) { set_header("Pragma", value); }
    void via(std::string const &value) { set_header("Via", value); }
    void warning(std::string const &value) { set_header("Warning", value); }

    /// Sets the status and writes an error page; \a message, escaped, is a paragraph of it.
    void make_error_response(int status, std::string const &message = "");
    static void make_error_response_html_body(int status, std::ostream &out, std::string const &message = "");

    // Output.

    io_mode_type io_mode();
    /// Throws cppcms_error after out().
    void io_mode(io_mode_type mode);
    /// The stream of the body, with the request's locale. Throws cppcms_error after finalize().
    std::ostream &out();
    /// Size of the output buffer in bytes; a negative one means the default.
    void setbuf(int size);
    /// Sends what has not left yet and ends the response.
    void finalize();
    /// Whether out() was called.
    bool some_output_was_written();

    /// As in `Sun, 06 Nov 1994 08:49:37 GMT`.
    static std::string make_http_time(std::time_t when);
    /// The reason phrase of a status, "Unknown" for one that is not known.
    static char const *status_to_string(int status);

  private:
    friend class context;

    response(context &ctx, impl::connection &to, impl::response_settings const &settings);
    bool end();    // finalize(); false where the client is gone
    bool flush();  // sends what is there even where output is held; false where the client is gone
    void imbue(std::locale const &l);

    struct data;
    std::unique_ptr<data> d;
};

}  // namespace http

}  // namespace cppcms

#include <cppcms/http_response.h>
#include <cppcms/util.h>

#include <ostream>

namespace cppcms::http {

namespace {

struct phrase {
    int status;
    char const *text;
};

constexpr phrase phrases[] = {
    {100, "Continue"},
    {101, "Switching Protocols"},
    {200, "OK"},
    {201, "Created"},
    {202, "Accepted"},
    {203, "Non-Authoritative Information"},
    {204, "No Content"},
    {205, "Reset Content"},
    {206, "Partial Content"},
    {300, "Multiple Choices"},
    {301, "Moved Permanently"},
    {302, "Found"},
    {303, "See Other"},
    {304, "Not Modified"},
    {305, "Use Proxy"},
    {307, "Temporary Redirect"},
    {400, "Bad Request"},
    {401, "Unauthorized"},
    {402, "Payment Required"},
    {403, "Forbidden"},
    {404, "Not Found"},
    {405, "Method Not Allowed"},
    {406, "Not Acceptable"},
    {407, "Proxy Authentication Required"},
    {408, "Request Time-out"},
    {409, "Conflict"},
    {410, "Gone"},
    {411, "Length Required"},
    {412, "Precondition Failed"},
    {413, "Request Entity Too Large"},
    {414, "Request-URI Too Large"},
    {415, "Unsupported Media Type"},
    {416, "Requested range not satisfiable"},
    {417, "Expectation Failed"},
    {421, "Misdirected Request"},
    {500, "Internal Server Error"},
    {501, "Not Implemented"},
    {502, "Bad Gateway"},
    {503, "Service Unavailable"},
    {504, "Gateway Time-out"},
    {505, "HTTP Version not supported"},
};

}  // namespace

char const *response::status_to_string(int status) {
    for (phrase const &known : phrases)
        if (known.status == status)
            return known.text;
    return "Unknown";
}

void response::make_error_response_html_body(int status, std::ostream &out, std::string const &message) {
    std::string const title = std::to_string(status) + " &mdash; " + status_to_string(status);
    out << "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\"\n"
           "\t\"http://www.w3.org/TR/html4/loose.dtd\">\n"
           "<html>\n"
           "  <head>\n"
           "    <title>"
        << title
        << "</title>\n"
           "  </head>\n"
           "  <body>\n"
           "    <h1>"
        << title << "</h1>\n";
    if (!message.empty())
        out << "    <p>" << util::escape(message) << "</p>\n";
    out << "  </body>\n"
           "</html>\n";
}

}  // namespace cppcms::http

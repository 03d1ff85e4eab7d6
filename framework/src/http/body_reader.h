#pragma once

#include <cppcms/http_request.h>

#include <string>

namespace cppcms::impl {

/// Most bytes that a request may bring, and where its files go.
struct body_limits {
    unsigned long long plain = 1024ull * 1024;  ///< a body that is not multipart; fields of one that is
    unsigned long long multipart = 64ull * 1024 * 1024;  ///< a multipart body
    std::size_t file_in_memory = 131072;                 ///< of one file, before it goes to disk
    std::string uploads_path;
};

/// Why a request is not served: the HTTP status to answer with, a text for the log, and one for the client.
struct refusal {
    int status = 0;
    std::string reason;
    std::string message = {};

    explicit operator bool() const { return status != 0; }
};

/// What the body of a request holds.
struct body_content {
    http::request::form_type fields;
    http::request::files_type files;
    std::string raw;
};

/// Reads a body of \a length bytes from \a from into \a content.
refusal read_body(connection &from, http::content_type const &type, unsigned long long length,
                  body_limits const &limits, body_content &content);

}  // namespace cppcms::impl

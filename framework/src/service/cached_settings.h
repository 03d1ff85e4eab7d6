#pragma once

#include <cppcms/json.h>
#include <http/body_reader.h>
#include <http/header_text.h>
#include <http/request_rules.h>

#include <cstddef>
#include <optional>
#include <string>

namespace cppcms::impl {

/// How responses are made.
struct response_settings {
    header_map headers;  ///< what a response has before the application sets or erases any
    bool charset_in_content_type = true;
    bool http_status_line = false;  ///< begin with `HTTP/1.0 ...` instead of a Status header
    bool display_error_message = false;
    std::optional<int> gzip_level;  ///< no compression where it is not set
    std::size_t buffer_size = 16384;
    std::size_t async_buffer_size = 1024;
};

/// The settings that every request needs, looked up once.
struct cached_settings {
    explicit cached_settings(json::value const &settings);

    int threads;
    request_rules rules;
    body_limits limits;
    response_settings response;
};

}  // namespace cppcms::impl

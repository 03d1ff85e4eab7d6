#include "cached_settings.h"

#include <http/configured_headers.h>

#include <algorithm>
#include <thread>

namespace cppcms::impl {

namespace {

constexpr unsigned long long kib = 1024;

int threads_of(json::value const &settings) {
    int const usual = 5 * static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    return std::max(1, settings.get("service.worker_threads", usual));
}

body_limits limits_of(json::value const &settings) {
    body_limits limits;
    limits.plain = settings.get("security.content_length_limit", limits.plain / kib) * kib;
    limits.multipart = settings.get("security.multipart_form_data_limit", limits.multipart / kib) * kib;
    limits.file_in_memory = settings.get("security.file_in_memory_limit", limits.file_in_memory);
    limits.uploads_path = settings.get("security.uploads_path", "");
    limits.silence = std::chrono::seconds(settings.get("http.timeout", 30));
    if (int const seconds = settings.get("http.body_seconds", 0); seconds > 0)
        limits.time = std::chrono::seconds(seconds);
    limits.rate = std::max(1ull, settings.get("http.body_rate", limits.rate));
    limits.large = settings.get("http.large_body", limits.large) * kib;
    if (!settings.find("http.large_bodies").is_undefined())
        limits.most_large = settings.get<int>("http.large_bodies");
    return limits;
}

response_settings response_of(json::value const &settings) {
    response_settings response;
    response.headers = configured_headers(settings);
    if (!settings.get("service.disable_xpowered_by", false))
        response.headers.try_emplace(
            "X-Powered-By",
            settings.get("service.disable_xpowered_by_version", false) ? "CppCMS" : "CppCMS/2.0.1");
    std::erase_if(response.headers, [](auto const &header) { return header.second.empty(); });
    response.charset_in_content_type = !settings.get("localization.disable_charset_in_content_type", false);
    response.http_status_line = settings.get("service.generate_http_headers", false);
    response.display_error_message = settings.get("security.display_error_message", false);
    if (settings.get("gzip.enable", true))
        response.gzip_level = std::clamp(settings.get("gzip.level", -1), -1, 9);
    response.buffer_size =
        std::max<std::size_t>(1, settings.get("service.output_buffer_size", response.buffer_size));
    response.async_buffer_size = std::max<std::size_t>(
        1, settings.get("service.async_output_buffer_size", response.async_buffer_size));
    return response;
}

}  // namespace

cached_settings::cached_settings(json::value const &settings)
    : threads(threads_of(settings)),
      rules(settings),
      limits(limits_of(settings)),
      response(response_of(settings)) {}

}  // namespace cppcms::impl

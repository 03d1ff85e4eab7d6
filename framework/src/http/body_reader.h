#pragma once

#include <booster/noncopyable.h>
#include <cppcms/http_request.h>
#include <fronts/connection.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace cppcms::impl {

/// Most bytes that a request may bring, how long it may take for that, and where its files go.
struct body_limits {
    unsigned long long plain = 1024ull * 1024;  ///< a body that is not multipart; fields of one that is
    unsigned long long multipart = 64ull * 1024 * 1024;  ///< a multipart body
    std::size_t file_in_memory = 131072;                 ///< of one file, before it goes to disk
    std::string uploads_path;
    std::chrono::seconds silence{30};  ///< without a byte, 0: no limit
    std::optional<std::chrono::seconds>
        time;  ///< for the whole body, and a second for each `rate` bytes of it
    unsigned long long rate = 1024;
    unsigned long long large = 0;   ///< bytes from which on a body counts as a large one
    std::optional<int> most_large;  ///< so many of those are taken at once
};

/// Why a request is not served: the HTTP status to answer with, a text for the log, and one for the client.
struct refusal {
    int status = 0;
    std::string reason = {};
    std::string message = {};
    int retry_after = 0;  ///< seconds after which it may be served, 0: not known

    explicit operator bool() const { return status != 0; }
};

/// What the body of a request holds.
struct body_content {
    http::request::form_type fields;
    http::request::files_type files;
    std::string raw;
};

/// Takes in the body of a request, piece by piece as it comes.
class body_reader : public booster::noncopyable {
  public:
    using clock = std::chrono::steady_clock;

    /// A body of \a length bytes, which goes to \a content.
    body_reader(http::content_type const &type, unsigned long long length, body_limits const &limits,
                body_content &content);
    ~body_reader();

    /// Takes what has come. True at the end, which may be a \a problem; false where it is to be called again.
    bool take(connection &from, refusal &problem);
    /// When that has to be, even if nothing more comes.
    clock::time_point deadline() const;
    /// Whether more is there already: one body is not taken for long, so that others have their turn.
    bool has_more() const { return has_more_; }

  private:
    class consumer;
    class form_consumer;
    class plain_consumer;

    refusal problem_of_time() const;

    std::unique_ptr<consumer> consumer_;
    refusal problem_;  // known from the beginning
    bool has_more_ = false;
    clock::duration silence_;
    clock::time_point last_piece_ = clock::now();
    clock::time_point end_ = clock::time_point::max();
};

}  // namespace cppcms::impl

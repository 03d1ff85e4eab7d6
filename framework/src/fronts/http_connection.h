#pragma once

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <memory>
#include <optional>
#include <string>

#include "connection.h"
#include "http_front.h"

namespace cppcms::impl {

/// A browser that speaks HTTP 1.0 or 1.1.
class http_connection : public connection {
  public:
    /// Most bytes of a request line with its headers.
    static constexpr std::size_t max_head = 65536;

    http_connection(int descriptor, connection_registry &registry, std::shared_ptr<http_front const> front);

    input read_head(environment &variables) override;
    piece read_body() override;
    bool write(std::string_view first, std::string_view second, chunk kind) override;
    bool finish() override;
    bool has_input() const override { return input_.size() > given_; }
    int idle_limit() const override { return front_->timeout; }

  private:
    using parser = boost::beast::http::request_parser<boost::beast::http::empty_body>;

    /// How the client learns where a response ends.
    enum class framing { undecided, length, chunked, close };

    input parse_head(environment &variables);
    input reject(char const *status_line, std::string_view problem);
    void describe(environment &variables);
    void describe_path(environment &variables, std::string_view target);
    bool begin_response(std::string_view block, std::string_view body, chunk kind);
    bool send_body(std::string prefix, std::string_view body, chunk kind);

    std::shared_ptr<http_front const> front_;
    boost::beast::flat_buffer input_;  // received, not yet taken
    std::size_t given_ = 0;  // bytes at the front that are a piece of the body, done with by the next
    std::optional<parser> parser_;
    unsigned long long body_left_ = 0;  // bytes of the body that were not read yet
    bool continue_expected_ = false;
    bool keep_alive_ = false;
    bool failed_ = false;
    framing framing_ = framing::undecided;
    std::string pending_;  // output before the end of the header block
};

}  // namespace cppcms::impl

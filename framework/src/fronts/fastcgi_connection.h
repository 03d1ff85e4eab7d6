#pragma once

#include "connection.h"
#include "fastcgi_head.h"

namespace cppcms::impl {

/// A web server that speaks FastCGI.
class fastcgi_connection : public connection {
  public:
    using connection::connection;

    input read_head(environment &variables) override;
    piece read_body() override;
    bool write(std::string_view first, std::string_view second, chunk kind) override;
    bool finish() override;
    bool has_input() const override { return input_.size() > 0; }
    int idle_limit() const override { return 0; }

  private:
    void drop(fastcgi_head::state why);
    std::string_view received() const;
    bool begin_record();
    std::string_view take_content();

    boost::beast::flat_buffer input_;  // received; a piece of a body stays until the next one is taken
    fastcgi_head head_;
    unsigned long long body_left_ = 0;  // bytes of the body that were announced and have not come
    std::size_t content_left_ = 0;      // bytes of the body that the record at hand has yet to bring
    std::size_t padding_ = 0;           // bytes behind them
    std::size_t skip_ = 0;  // bytes at the front that are done with, whether they have come or not
    bool body_ended_ = false;
    bool failed_ = false;
};

}  // namespace cppcms::impl

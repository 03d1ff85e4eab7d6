#pragma once

#include <fcgiapp.h>

#include "connection.h"

namespace cppcms::impl {

/// A web server that speaks FastCGI.
class fastcgi_connection : public connection {
  public:
    /// \a timeout in seconds, of each wait for the web server within a request.
    fastcgi_connection(int descriptor, connection_registry &registry, int timeout);
    ~fastcgi_connection() override;

    head read_head(environment &variables) override;
    std::size_t read(char *buffer, std::size_t size) override;
    bool write(std::string_view first, std::string_view second, chunk kind) override;
    bool finish() override;
    int idle_limit() const override { return 0; }

  private:
    head wait_for_head();
    void answer_unknown_role(std::string_view begin_record);

    FCGX_Request request_{};
};

}  // namespace cppcms::impl

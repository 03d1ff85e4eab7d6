#pragma once

#include <fronts/connection.h>
#include <zlib.h>

#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <vector>

namespace cppcms::impl {

/// The stream buffer behind a response: sends what is written to it to the client, behind the header block,
/// each time the buffer is full.
class output_buffer : public std::streambuf {
  public:
    struct options {
        std::size_t size;               ///< of the buffer, bytes
        bool hold_all = false;          ///< keep all output until the end
        std::optional<int> gzip_level;  ///< compress, where it is set
    };

    output_buffer(connection &to, std::string head, options const &how);
    ~output_buffer() override;

    void resize(std::size_t size);
    /// Sends what is there. False where the client is gone.
    bool flush() { return send(connection::chunk::flush); }
    /// Sends what is left and ends the response. False where the client is gone.
    bool close();

  protected:
    int_type overflow(int_type c) override;
    int sync() override;

  private:
    bool send(connection::chunk kind);
    bool send_compressed(connection::chunk kind);
    bool write(std::string_view body, connection::chunk kind);
    void reset(std::size_t used);

    connection &to_;
    std::string head_;
    bool hold_all_;
    bool open_ = true;
    std::size_t size_;
    std::unique_ptr<char[]> buffer_;  // never cleared, as most pages fill a part of it
    std::optional<z_stream> deflate_;
    std::vector<char> compressed_;
};

}  // namespace cppcms::impl

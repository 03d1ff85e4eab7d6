#include "output_buffer.h"

#include <algorithm>

namespace cppcms::impl {

namespace {

constexpr int gzip_window_bits = 15 + 16;  // + 16: with a gzip header
constexpr int memory_level = 8;

}  // namespace

output_buffer::output_buffer(connection &to, std::string head, options const &how)
    : to_(to),
      head_(std::move(head)),
      hold_all_(how.hold_all),
      size_(how.size),
      buffer_(std::make_unique_for_overwrite<char[]>(size_)) {
    reset(0);
    if (how.gzip_level) {
        deflate_.emplace();
        deflateInit2(&*deflate_, *how.gzip_level, Z_DEFLATED, gzip_window_bits, memory_level,
                     Z_DEFAULT_STRATEGY);
        compressed_.resize(how.size);
        deflate_->next_out = reinterpret_cast<Bytef *>(compressed_.data());
        deflate_->avail_out = static_cast<uInt>(compressed_.size());
    }
}

output_buffer::~output_buffer() {
    if (deflate_)
        deflateEnd(&*deflate_);
}

void output_buffer::reset(std::size_t used) {
    setp(buffer_.get(), buffer_.get() + size_);
    pbump(static_cast<int>(used));
}

void output_buffer::resize(std::size_t size) {
    auto const used = static_cast<std::size_t>(pptr() - pbase());
    size_ = std::max({size, used, std::size_t(1)});
    auto buffer = std::make_unique_for_overwrite<char[]>(size_);
    std::copy_n(buffer_.get(), used, buffer.get());
    buffer_ = std::move(buffer);
    reset(used);
}

bool output_buffer::close() {
    return send(connection::chunk::last);
}

output_buffer::int_type output_buffer::overflow(int_type c) {
    if (hold_all_)
        resize(size_ * 2);
    else if (!send(connection::chunk::more))
        return traits_type::eof();
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    return sputc(traits_type::to_char_type(c));
}

int output_buffer::sync() {
    // Compressed output leaves when there is enough of it: cutting it short would cost compression.
    if (hold_all_ || deflate_)
        return 0;
    return send(connection::chunk::flush) ? 0 : -1;
}

bool output_buffer::send(connection::chunk kind) {
    if (!open_)
        return false;
    std::string_view const body(pbase(), static_cast<std::size_t>(pptr() - pbase()));
    open_ = (deflate_ ? send_compressed(kind) : write(body, kind)) && kind != connection::chunk::last;
    reset(0);
    return open_ || kind == connection::chunk::last;
}

bool output_buffer::send_compressed(connection::chunk kind) {
    bool const last = kind == connection::chunk::last;
    deflate_->next_in = reinterpret_cast<Bytef *>(pbase());
    deflate_->avail_in = static_cast<uInt>(pptr() - pbase());
    for (;;) {
        int const state = deflate(&*deflate_, last ? Z_FINISH : Z_NO_FLUSH);
        if (state == Z_STREAM_ERROR)
            return false;
        bool const done = last ? state == Z_STREAM_END : deflate_->avail_out > 0;
        std::string_view const piece(compressed_.data(), compressed_.size() - deflate_->avail_out);
        if (done)
            return !last || write(piece, kind);
        if (!write(piece, connection::chunk::more))
            return false;
        deflate_->next_out = reinterpret_cast<Bytef *>(compressed_.data());
        deflate_->avail_out = static_cast<uInt>(compressed_.size());
    }
}

bool output_buffer::write(std::string_view body, connection::chunk kind) {
    bool const written = to_.write(head_, body, kind);
    head_.clear();
    return written;
}

}  // namespace cppcms::impl

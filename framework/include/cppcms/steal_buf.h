#pragma once

#include <istream>
#include <streambuf>

namespace cppcms::util {

/// Input buffer over characters that it does not copy.
class const_char_buf : public std::streambuf {
  public:
    const_char_buf() = default;
    const_char_buf(char const *begin, char const *end) { range(begin, end); }

    void range(char const *begin, char const *end) {
        setg(const_cast<char *>(begin), const_cast<char *>(begin), const_cast<char *>(end));
    }
    char const *begin() const { return gptr(); }
    char const *end() const { return egptr(); }
};

/// Input stream over characters that it does not copy; they must outlive it.
class const_char_istream : public std::istream {
  public:
    const_char_istream() : std::istream(nullptr) { rdbuf(&buffer_); }
    const_char_istream(char const *begin, char const *end) : const_char_istream() { range(begin, end); }

    void range(char const *begin, char const *end) {
        buffer_.range(begin, end);
        clear();
    }
    /// What has not been read yet.
    char const *begin() const { return buffer_.begin(); }
    char const *end() const { return buffer_.end(); }

  private:
    const_char_buf buffer_;
};

}  // namespace cppcms::util

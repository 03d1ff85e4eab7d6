#pragma once

#include <sys/types.h>

#include <cstddef>
#include <streambuf>
#include <string>
#include <vector>

namespace cppcms::impl {

/// Removes what processes that were killed have left of uploads in \a directory, by default where temporary
/// files go. What a process still has open stays.
void remove_left_over_uploads(std::string const &directory);

/// A stream buffer that holds its content in memory up to a limit, and in a file beyond it. Writing
/// appends; reading has a position of its own.
class spool_buffer : public std::streambuf {
  public:
    spool_buffer() = default;
    ~spool_buffer() override;

    void set_memory_limit(std::size_t bytes) { memory_limit_ = bytes; }
    /// Name of the file to be made beyond the limit.
    void set_temporary_directory(std::string const &directory) { directory_ = directory; }

    /// Moves the content to the file \a path, which is replaced. False where that fails.
    bool use_file(std::string const &path);
    /// The file's name, "" while the content is in memory.
    std::string const &path() const { return path_; }
    std::string const &memory() const { return memory_; }
    long long size() const { return size_; }
    /// Ends reading and writing.
    void close();
    bool is_closed() const { return closed_; }

  protected:
    std::streamsize xsputn(char const *data, std::streamsize size) override;
    int_type overflow(int_type c) override;
    int_type underflow() override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

  private:
    bool spill();
    bool move_to(std::string const &path, int flags, mode_t mode);
    bool write_file(char const *data, std::size_t size);
    /// Position in the content of the next byte to be read.
    long long read_position() const { return window_end_ - (egptr() - gptr()); }

    std::size_t memory_limit_ = 131072;
    std::string directory_;
    std::string memory_;
    std::string path_;
    int descriptor_ = -1;
    bool closed_ = false;
    long long size_ = 0;
    std::vector<char> window_;  // read buffer of the file
    long long window_end_ = 0;  // position in the content of egptr()
};

}  // namespace cppcms::impl

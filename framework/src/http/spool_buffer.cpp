#include "spool_buffer.h"

#include <booster/log.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace cppcms::impl {

namespace {

constexpr std::size_t window_size = 16384;

std::string default_directory() {
    for (char const *variable : {"TEMP", "TMP"})
        if (char const *const directory = std::getenv(variable); directory && *directory)
            return directory;
    return "/tmp";
}

constexpr std::string_view name_begin = "cppcms_uploads_";
constexpr std::string_view name_end = ".tmp";

std::string temporary_name() {
    constexpr char hex[] = "0123456789abcdef";
    std::array<unsigned char, 16> random{};
    if (getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size()))
        return {};
    std::string name(name_begin);
    for (unsigned const byte : random) {
        name += hex[byte >> 4];
        name += hex[byte & 15];
    }
    return name.append(name_end);
}

/// Whether the file is one of this user's that nobody has open: the lock of whoever made it went with it.
bool is_left_over(std::string const &path) {
    int const file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat info {};
    bool const result = ::fstat(file, &info) == 0 && S_ISREG(info.st_mode) && info.st_uid == ::geteuid() &&
                        ::flock(file, LOCK_EX | LOCK_NB) == 0;
    ::close(file);
    return result;
}

}  // namespace

void remove_left_over_uploads(std::string const &directory) {
    std::error_code ignored;
    std::filesystem::path const folder = directory.empty() ? default_directory() : directory;
    for (auto entry = std::filesystem::directory_iterator(folder, ignored);
         entry != std::filesystem::directory_iterator(); entry.increment(ignored)) {
        std::string const name = entry->path().filename();
        if (name.starts_with(name_begin) && name.ends_with(name_end) && is_left_over(entry->path()) &&
            std::filesystem::remove(entry->path(), ignored))
            BOOSTER_INFO("cppcms") << "Removed " << entry->path().string() << ", the rest of an upload";
    }
}

spool_buffer::~spool_buffer() {
    close();
}

void spool_buffer::close() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = -1;
    closed_ = true;
    setg(nullptr, nullptr, nullptr);
}

bool spool_buffer::use_file(std::string const &path) {
    return move_to(path, O_TRUNC, 0666);
}

bool spool_buffer::move_to(std::string const &path, int flags, mode_t mode) {
    if (closed_ || descriptor_ >= 0)
        return false;
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | flags, mode);
    if (descriptor_ < 0)
        return false;
    path_ = path;
    window_end_ = read_position();
    setg(nullptr, nullptr, nullptr);
    bool const moved = write_file(memory_.data(), memory_.size());
    std::string().swap(memory_);
    return moved;
}

bool spool_buffer::spill() {
    std::string const name = temporary_name();
    bool const moved =
        !name.empty() && move_to((directory_.empty() ? default_directory() : directory_) + '/' + name,
                                 O_EXCL | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (moved)
        ::flock(descriptor_, LOCK_EX | LOCK_NB);  // for is_left_over(); works without, too
    return moved;
}

bool spool_buffer::write_file(char const *data, std::size_t size) {
    while (size > 0) {
        ssize_t const written = ::write(descriptor_, data, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

std::streamsize spool_buffer::xsputn(char const *data, std::streamsize size) {
    if (closed_)
        return 0;
    auto const bytes = static_cast<std::size_t>(size);
    if (descriptor_ < 0 && memory_.size() + bytes > memory_limit_ && !spill())
        return 0;
    if (descriptor_ >= 0) {
        if (!write_file(data, bytes))
            return 0;
    } else {
        // The text may move: the window on it is opened again by the next read.
        window_end_ = read_position();
        setg(nullptr, nullptr, nullptr);
        memory_.append(data, bytes);
    }
    size_ += size;
    return size;
}

spool_buffer::int_type spool_buffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof()))
        return traits_type::not_eof(c);
    char const byte = traits_type::to_char_type(c);
    return xsputn(&byte, 1) == 1 ? c : traits_type::eof();
}

spool_buffer::int_type spool_buffer::underflow() {
    long long const position = read_position();
    if (closed_ || position >= size_)
        return traits_type::eof();
    if (descriptor_ < 0) {
        setg(memory_.data(), memory_.data() + position, memory_.data() + memory_.size());
        window_end_ = size_;
    } else {
        window_.resize(window_size);
        ssize_t const got = ::pread(descriptor_, window_.data(), window_.size(), position);
        if (got <= 0)
            return traits_type::eof();
        setg(window_.data(), window_.data(), window_.data() + got);
        window_end_ = position + got;
    }
    return traits_type::to_int_type(*gptr());
}

spool_buffer::pos_type spool_buffer::seekoff(off_type offset, std::ios_base::seekdir from,
                                             std::ios_base::openmode which) {
    if (closed_)
        return pos_type(off_type(-1));
    if (!(which & std::ios_base::in))
        return from == std::ios_base::cur && offset == 0 ? pos_type(size_) : pos_type(off_type(-1));
    long long const base = from == std::ios_base::beg   ? 0
                           : from == std::ios_base::cur ? read_position()
                                                        : size_;
    long long const position = base + offset;
    if (position < 0 || position > size_)
        return pos_type(off_type(-1));
    window_end_ = position;
    setg(nullptr, nullptr, nullptr);
    return pos_type(position);
}

spool_buffer::pos_type spool_buffer::seekpos(pos_type position, std::ios_base::openmode which) {
    return seekoff(off_type(position), std::ios_base::beg, which);
}

}  // namespace cppcms::impl

#pragma once

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace booster {

/// Symbols of code addresses. A frame whose symbol is not known is written as "???".
namespace stack_trace {

/// Records up to \a size return addresses of the calling thread; returns how many were stored.
int trace(void **addresses, int size);

/// The line of one address, without a line end: `0xADDRESS: SYMBOL + 0xOFFSET in MODULE`.
std::string get_symbol(void *address);

/// The lines of \a size addresses, each followed by a newline.
std::string get_symbols(void *const *addresses, int size);

/// Writes get_symbols() to a stream.
void write_symbols(void *const *addresses, int size, std::ostream &out);

}  // namespace stack_trace

/// Base of exceptions that remember where they were made.
class backtrace {
  public:
    static constexpr std::size_t default_stack_size = 32;

    backtrace(std::size_t frames = default_stack_size);
    virtual ~backtrace() noexcept = default;

    backtrace(backtrace const &) = default;
    backtrace &operator=(backtrace const &) = default;

    /// Number of recorded frames.
    std::size_t stack_size() const { return frames_.size(); }
    /// Return address of frame \a n, or a null pointer beyond the last one.
    void *return_address(unsigned n) const;

    void trace(std::ostream &out) const;
    std::string trace() const;
    void trace_line(unsigned n, std::ostream &out) const;
    std::string trace_line(unsigned n) const;

  private:
    std::vector<void *> frames_;
};

// The standard exceptions, each with a backtrace.

class exception : public std::exception, public backtrace {};
class bad_cast : public std::bad_cast, public backtrace {};

class runtime_error : public std::runtime_error, public backtrace {
  public:
    explicit runtime_error(std::string const &what) : std::runtime_error(what) {}
};

class range_error : public std::range_error, public backtrace {
  public:
    explicit range_error(std::string const &what) : std::range_error(what) {}
};

class overflow_error : public std::overflow_error, public backtrace {
  public:
    explicit overflow_error(std::string const &what) : std::overflow_error(what) {}
};

class underflow_error : public std::underflow_error, public backtrace {
  public:
    explicit underflow_error(std::string const &what) : std::underflow_error(what) {}
};

class logic_error : public std::logic_error, public backtrace {
  public:
    explicit logic_error(std::string const &what) : std::logic_error(what) {}
};

class domain_error : public std::domain_error, public backtrace {
  public:
    explicit domain_error(std::string const &what) : std::domain_error(what) {}
};

class invalid_argument : public std::invalid_argument, public backtrace {
  public:
    explicit invalid_argument(std::string const &what) : std::invalid_argument(what) {}
};

class length_error : public std::length_error, public backtrace {
  public:
    explicit length_error(std::string const &what) : std::length_error(what) {}
};

class out_of_range : public std::out_of_range, public backtrace {
  public:
    explicit out_of_range(std::string const &what) : std::out_of_range(what) {}
};

namespace details {

class trace_manip {
  public:
    explicit trace_manip(backtrace const *trace) : trace_(trace) {}
    std::ostream &write(std::ostream &out) const {
        if (trace_)
            trace_->trace(out);
        return out;
    }

  private:
    backtrace const *trace_;
};

inline std::ostream &operator<<(std::ostream &out, trace_manip const &manip) {
    return manip.write(out);
}

}  // namespace details

/// `out << trace(e)` writes the backtrace of \a error, or nothing where it carries none.
template <typename Error>
details::trace_manip trace(Error const &error) {
    return details::trace_manip(dynamic_cast<backtrace const *>(&error));
}

}  // namespace booster

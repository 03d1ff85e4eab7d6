#pragma once

#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>

#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <sstream>
#include <string>
#include <vector>

namespace booster::log {

/// Severity; a smaller number is more urgent.
enum level_type {
    emergency = 0,
    alert = 10,
    critical = 20,
    error = 30,
    warning = 40,
    notice = 50,
    info = 60,
    debug = 70,
    all = 100
};

/// One log line. It is built with out() and handed to all sinks by the destructor.
class message : public noncopyable {
  public:
    /// \a module and \a file must live as long as the process. Of \a file only what follows its last
    /// separator is kept.
    message(level_type level, char const *module, char const *file, int line);
    message(message &&other) noexcept;
    ~message();

    level_type level() const { return level_; }
    char const *module() const { return module_; }
    char const *file_name() const { return file_name_; }
    int file_line() const { return file_line_; }
    /// The text written so far.
    std::string log_message() const { return text_ ? text_->str() : std::string(); }
    std::ostream &out() { return *text_; }

  private:
    level_type level_;
    char const *module_;
    char const *file_name_;
    int file_line_;
    std::unique_ptr<std::ostringstream> text_;
};

/// Where log lines go. log() may be called by several threads at once.
class sink : public noncopyable {
  public:
    virtual void log(message const &msg) = 0;
    virtual ~sink() = default;
};

/// The process-wide logger: level filter and list of sinks.
class logger : public noncopyable {
  public:
    static logger &instance();

    /// Whether a line of \a level passes the filter of \a module. Only the BOOSTER_ macros ask.
    bool should_be_logged(level_type level, char const *module) const;
    /// Level of modules without one of their own; error at first.
    void set_default_level(level_type level);
    void set_log_level(level_type level, char const *module);
    void reset_log_level(char const *module);
    /// The default level again for every module.
    void reset_log_level();

    void add_sink(shared_ptr<sink> const &added);
    void remove_sink(weak_ptr<sink> const &removed);
    void remove_all_sinks();
    /// Hands a line to every sink, unfiltered.
    void log(message const &msg);

    static char const *level_to_string(level_type level);
    /// Throws booster::invalid_argument where \a text names no level.
    static level_type string_to_level(std::string const &text);

  private:
    logger() = default;

    mutable std::shared_mutex guard_;
    level_type default_level_ = error;
    std::map<std::string, level_type, std::less<>> module_levels_;
    std::vector<shared_ptr<sink>> sinks_;
};

/// `DATE TIME; MODULE, LEVEL: TEXT (FILE:LINE)` in local time, or, with a time zone offset in seconds,
/// `DATE TIME GMT+2;MODULE, LEVEL: TEXT (FILE:LINE)`. No line end.
std::string format_plain_text_message(message const &msg);
std::string format_plain_text_message_tz(message const &msg, int timezone_offset);

namespace sinks {

class standard_error : public sink {
  public:
    void log(message const &msg) override;
};

/// Writes to a stream that outlives the sink.
class stream : public sink {
  public:
    explicit stream(std::ostream &out) : out_(out) {}
    void log(message const &msg) override;

  private:
    std::mutex guard_;
    std::ostream &out_;
};

/// Writes to a file, truncated when opened unless append() was called before.
class file : public sink {
  public:
    file() = default;
    /// Opens \a name; with \a max_files > 0 earlier files are kept as NAME.1, NAME.2 and so on.
    /// Throws booster::runtime_error where it cannot be opened.
    explicit file(std::string const &name, int max_files = 0);

    void open(std::string const &name);
    void max_files(int limit) { max_files_ = limit; }
    void append() { append_ = true; }
    /// Seconds east of Greenwich of the written times.
    void set_timezone_offset(int seconds);
    void use_local_time() { use_local_time_ = true; }
    void log(message const &msg) override;

  private:
    void shift(std::string const &name) const;

    std::mutex guard_;
    std::ofstream out_;
    int max_files_ = 0;
    bool append_ = false;
    bool use_local_time_ = true;
    int timezone_offset_ = 0;
};

/// Writes to the system log. openlog() is called by the constructors that have options, closelog() by
/// the destructor of such a sink.
class syslog : public sink {
  public:
    explicit syslog(std::string const &id, int options, int facility = 0);
    explicit syslog(int options, int facility = 0);
    syslog() = default;
    ~syslog() override;
    void log(message const &msg) override;

  private:
    std::string id_;  // openlog() keeps a pointer to it
    bool opened_ = false;
};

}  // namespace sinks

}  // namespace booster::log

#define BOOSTER_LOG(level, module)                                                        \
    ::booster::log::logger::instance().should_be_logged(::booster::log::level, module) && \
        ::booster::log::message(::booster::log::level, module, __FILE__, __LINE__).out()

#define BOOSTER_EMERG(module) BOOSTER_LOG(emergency, module)
#define BOOSTER_ALERT(module) BOOSTER_LOG(alert, module)
#define BOOSTER_CRITICAL(module) BOOSTER_LOG(critical, module)
#define BOOSTER_ERROR(module) BOOSTER_LOG(error, module)
#define BOOSTER_WARNING(module) BOOSTER_LOG(warning, module)
#define BOOSTER_NOTICE(module) BOOSTER_LOG(notice, module)
#define BOOSTER_INFO(module) BOOSTER_LOG(info, module)
#define BOOSTER_DEBUG(module) BOOSTER_LOG(debug, module)

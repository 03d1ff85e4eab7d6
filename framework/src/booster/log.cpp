#include <booster/backtrace.h>
#include <booster/log.h>

#include <syslog.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>

namespace booster::log {

namespace {

struct level_name {
    level_type level;
    char const *name;
};

constexpr std::array<level_name, 9> level_names{{{emergency, "emergency"},
                                                 {alert, "alert"},
                                                 {critical, "critical"},
                                                 {error, "error"},
                                                 {warning, "warning"},
                                                 {notice, "notice"},
                                                 {info, "info"},
                                                 {debug, "debug"},
                                                 {all, "all"}}};

char const *last_component(char const *path) {
    char const *component = path;
    for (char const *p = path; *p; ++p) {
        if (std::strchr("/\\:]", *p))
            component = p + 1;
    }
    return component;
}

std::string time_text(char const *format, std::tm const &when) {
    char text[64];
    return std::string(text, std::strftime(text, sizeof(text), format, &when));
}

std::string body(message const &msg) {
    std::ostringstream text;
    text << msg.module() << ", " << logger::level_to_string(msg.level()) << ": " << msg.log_message() << " ("
         << msg.file_name() << ':' << msg.file_line() << ')';
    return text.str();
}

std::string timezone_name(int offset) {
    if (offset == 0)
        return "GMT";
    std::string name = offset > 0 ? "GMT+" : "GMT-";
    int const minutes = std::abs(offset) / 60;
    name += std::to_string(minutes / 60);
    if (minutes % 60)
        name += ':' + std::to_string(minutes % 60);
    return name;
}

}  // namespace

message::message(level_type level, char const *module, char const *file, int line)
    : level_(level),
      module_(module),
      file_name_(last_component(file)),
      file_line_(line),
      text_(std::make_unique<std::ostringstream>()) {
    text_->imbue(std::locale::classic());
}

message::message(message &&other) noexcept
    : level_(other.level_),
      module_(other.module_),
      file_name_(other.file_name_),
      file_line_(other.file_line_),
      text_(std::move(other.text_)) {}

message::~message() {
    if (!text_)
        return;
    try {
        logger::instance().log(*this);
    } catch (...) {
        // A line that cannot be written has nowhere else to go.
    }
}

logger &logger::instance() {
    static logger the_logger;
    return the_logger;
}

bool logger::should_be_logged(level_type level, char const *module) const {
    std::shared_lock const lock(guard_);
    auto const own = module_levels_.find(std::string_view(module));
    return level <= (own == module_levels_.end() ? default_level_ : own->second);
}

void logger::set_default_level(level_type level) {
    std::unique_lock const lock(guard_);
    default_level_ = level;
}

void logger::set_log_level(level_type level, char const *module) {
    std::unique_lock const lock(guard_);
    module_levels_.insert_or_assign(module, level);
}

void logger::reset_log_level(char const *module) {
    std::unique_lock const lock(guard_);
    module_levels_.erase(module);
}

void logger::reset_log_level() {
    std::unique_lock const lock(guard_);
    module_levels_.clear();
}

void logger::add_sink(shared_ptr<sink> const &added) {
    std::unique_lock const lock(guard_);
    sinks_.push_back(added);
}

void logger::remove_sink(weak_ptr<sink> const &removed) {
    std::unique_lock const lock(guard_);
    std::erase(sinks_, removed.lock());
}

void logger::remove_all_sinks() {
    std::unique_lock const lock(guard_);
    sinks_.clear();
}

void logger::log(message const &msg) {
    std::shared_lock const lock(guard_);
    for (auto const &target : sinks_)
        target->log(msg);
}

char const *logger::level_to_string(level_type level) {
    for (auto const &entry : level_names) {
        if (entry.level == level)
            return entry.name;
    }
    return "unknown";
}

level_type logger::string_to_level(std::string const &text) {
    for (auto const &entry : level_names) {
        if (text == entry.name)
            return entry.level;
    }
    throw booster::invalid_argument("Invalig logging level :" + text);
}

std::string format_plain_text_message(message const &msg) {
    std::time_t const now = std::time(nullptr);
    std::tm when{};
    localtime_r(&now, &when);
    return time_text("%Y-%m-%d %H:%M:%S; ", when) + body(msg);
}

std::string format_plain_text_message_tz(message const &msg, int timezone_offset) {
    std::time_t const shifted = std::time(nullptr) + timezone_offset;
    std::tm when{};
    gmtime_r(&shifted, &when);
    return time_text("%Y-%m-%d %H:%M:%S ", when) + timezone_name(timezone_offset) + ';' + body(msg);
}

namespace sinks {

void standard_error::log(message const &msg) {
    // One write, so that lines of several threads and processes do not mix.
    std::string const line = format_plain_text_message(msg) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void stream::log(message const &msg) {
    std::string const line = format_plain_text_message(msg);
    std::lock_guard const lock(guard_);
    out_ << line << std::endl;
}

file::file(std::string const &name, int max_files) : max_files_(max_files) {
    open(name);
}

void file::shift(std::string const &name) const {
    for (int n = max_files_; n > 1; --n)
        std::rename((name + '.' + std::to_string(n - 1)).c_str(), (name + '.' + std::to_string(n)).c_str());
    std::rename(name.c_str(), (name + ".1").c_str());
}

void file::open(std::string const &name) {
    std::lock_guard const lock(guard_);
    if (max_files_ > 0)
        shift(name);
    out_.close();
    out_.clear();
    out_.open(name, append_ ? std::ios::out | std::ios::app : std::ios::out | std::ios::trunc);
    if (!out_)
        throw booster::runtime_error("Failed to open file:" + name);
}

void file::set_timezone_offset(int seconds) {
    timezone_offset_ = seconds;
    use_local_time_ = false;
}

void file::log(message const &msg) {
    std::string const line = use_local_time_ ? format_plain_text_message(msg)
                                             : format_plain_text_message_tz(msg, timezone_offset_);
    std::lock_guard const lock(guard_);
    out_ << line << std::endl;
}

namespace {

/// The levels are the system log's priorities in steps of ten, LOG_EMERG to LOG_DEBUG.
constexpr int priority_of(level_type level) {
    return std::min(level / 10, LOG_DEBUG);
}

}  // namespace

syslog::syslog(std::string const &id, int options, int facility) : id_(id), opened_(true) {
    ::openlog(id_.c_str(), options, facility);
}

syslog::syslog(int options, int facility) : opened_(true) {
    ::openlog(nullptr, options, facility);
}

syslog::~syslog() {
    if (opened_)
        ::closelog();
}

void syslog::log(message const &msg) {
    ::syslog(priority_of(msg.level()), "%s: %s (%s:%d)", msg.module(), msg.log_message().c_str(),
             msg.file_name(), msg.file_line());
}

}  // namespace sinks

}  // namespace booster::log

#pragma once

#include <booster/log.h>

#include <ostream>

namespace webconfig::util {

/// A log line of the module "webconfig". It is written when the object goes.
class LogLine {
  public:
    /// \a tag says where the line comes from, for example "WebApps/webconfig/util/Prm"; it must live as
    /// long as the process.
    LogLine(booster::log::level_type level, char const *tag, int line)
        : _scope(tag), _message(level, "webconfig", tag, line) {}

    std::ostream &out() { return _message.out(); }

    /// The whole tag of the line that this thread is just writing, or null. Sinks ask here, because the
    /// framework's own message keeps only what follows the tag's last slash.
    static char const *CurrentTag() { return TagScope::current; }

  private:
    struct TagScope {
        inline static thread_local char const *current = nullptr;
        explicit TagScope(char const *tag) { current = tag; }
        ~TagScope() { current = nullptr; }
        TagScope(TagScope const &) = delete;
        TagScope &operator=(TagScope const &) = delete;
    };

    TagScope _scope;  // outlives the message, whose destructor writes the line
    booster::log::message _message;
};

}  // namespace webconfig::util

/// Starts a log line: `WEBCONFIG_LOG(error, logTag) << "text";`. \a level is a name of
/// booster::log::level_type. What follows is evaluated only where the logger accepts the level.
#define WEBCONFIG_LOG(level, tag)                                                              \
    ::booster::log::logger::instance().should_be_logged(::booster::log::level, "webconfig") && \
        ::webconfig::util::LogLine(::booster::log::level, tag, __LINE__).out()

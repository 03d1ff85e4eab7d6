#include "WebApps/webconfig/main/SystemLog.h"

#include <syslog.h>

#include "WebApps/webconfig/util/Log.h"

namespace webconfig {

namespace {

/// The logger's levels are the system log's priorities in steps of ten, LOG_EMERG to LOG_DEBUG.
constexpr int PriorityOf(booster::log::level_type level) {
    return level / 10;
}
static_assert(PriorityOf(booster::log::error) == LOG_ERR && PriorityOf(booster::log::debug) == LOG_DEBUG);

}  // namespace

void SystemLog::log(booster::log::message const &message) {
    char const *tag = util::LogLine::CurrentTag();
    syslog(PriorityOf(message.level()), "%s: %s (%s:%d)", message.module(), message.log_message().c_str(),
           tag ? tag : message.file_name(), message.file_line());
}

}  // namespace webconfig

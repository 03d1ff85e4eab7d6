#include "log_setup.h"

#include <booster/log.h>
#include <cppcms/cppcms_error.h>
#include <syslog.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace cppcms::impl {

namespace {

struct named_value {
    char const *name;
    int value;
};

constexpr std::array facilities{
    named_value{"user", LOG_USER},     named_value{"local0", LOG_LOCAL0}, named_value{"local1", LOG_LOCAL1},
    named_value{"local2", LOG_LOCAL2}, named_value{"local3", LOG_LOCAL3}, named_value{"local4", LOG_LOCAL4},
    named_value{"local5", LOG_LOCAL5}, named_value{"local6", LOG_LOCAL6}, named_value{"local7", LOG_LOCAL7},
};

constexpr std::array options{
    named_value{"LOG_CONS", LOG_CONS},     named_value{"LOG_NDELAY", LOG_NDELAY},
    named_value{"LOG_NOWAIT", LOG_NOWAIT}, named_value{"LOG_ODELAY", LOG_ODELAY},
    named_value{"LOG_PERROR", LOG_PERROR}, named_value{"LOG_PID", LOG_PID},
};

template <std::size_t Size>
int value_of(std::array<named_value, Size> const &values, std::string const &name, char const *problem) {
    auto const found =
        std::find_if(values.begin(), values.end(), [&](auto const &v) { return name == v.name; });
    if (found == values.end())
        throw cppcms_error(problem + name);
    return found->value;
}

/// Seconds east of Greenwich of `GMT`, `GMT+2`, `GMT-03:30` or `UTC+2`.
int timezone_offset(std::string const &zone) {
    if (zone.size() < 4)
        return 0;
    char *end = nullptr;
    long const hours = std::strtol(zone.c_str() + 3, &end, 10);
    long const minutes = *end == ':' ? std::strtol(end + 1, nullptr, 10) : 0;
    return static_cast<int>(hours * 3600 + (zone[3] == '-' ? -60 : 60) * minutes);
}

booster::shared_ptr<booster::log::sink> file_sink(json::value const &settings, std::string const &name) {
    auto sink = std::make_shared<booster::log::sinks::file>();
    if (settings.get("append", false))
        sink->append();
    sink->max_files(settings.get("max_files", 0));
    if (std::string const zone = settings.get("timezone", ""); !zone.empty())
        sink->set_timezone_offset(timezone_offset(zone));
    sink->open(name);
    return sink;
}

booster::shared_ptr<booster::log::sink> syslog_sink(json::value const &settings) {
    int const facility =
        value_of(facilities, settings.get("facility", "user"), "Unsupported syslog facility: ");
    int flags = 0;
    for (std::string const &option : settings.get("options", std::vector<std::string>()))
        flags |= value_of(options, option, "Unsupported syslog option: ");
    std::string const id = settings.get("id", "");
    if (id.empty())
        return std::make_shared<booster::log::sinks::syslog>(flags, facility);
    return std::make_shared<booster::log::sinks::syslog>(id, flags, facility);
}

}  // namespace

void set_up_log(json::value const &settings) {
    json::value const &logging = settings.find("logging");
    auto &logger = booster::log::logger::instance();
    logger.set_default_level(booster::log::logger::string_to_level(logging.get("level", "error")));

    bool const elsewhere = !logging.find("file").is_undefined() || !logging.find("syslog").is_undefined() ||
                           !logging.find("stderr").is_undefined();
    if (logging.get("stderr", !elsewhere))
        logger.add_sink(std::make_shared<booster::log::sinks::standard_error>());
    if (logging.get("syslog.enable", false))
        logger.add_sink(syslog_sink(logging.find("syslog")));
    if (std::string const name = logging.get("file.name", ""); !name.empty())
        logger.add_sink(file_sink(logging.find("file"), name));
}

}  // namespace cppcms::impl

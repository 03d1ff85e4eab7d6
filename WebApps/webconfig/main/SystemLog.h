#pragma once

#include <booster/log.h>

namespace webconfig {

/// Sends log lines to the system log, with the whole source tag. The process opens the system log itself.
class SystemLog : public booster::log::sink {
  public:
    void log(booster::log::message const &message) override;
};

}  // namespace webconfig

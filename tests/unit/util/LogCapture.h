#pragma once

#include <booster/log.h>
#include <booster/shared_ptr.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// Collects the log lines that are written while it lives, as "level: text (source)".
class LogCapture {
  public:
    explicit LogCapture(booster::log::level_type level, char const *module = "webconfig")
        : module_(module), lines_(std::make_shared<Lines>()) {
        logger().set_log_level(level, module_);
        logger().add_sink(lines_);
    }
    ~LogCapture() {
        logger().remove_sink(lines_);
        logger().reset_log_level(module_);
    }
    LogCapture(LogCapture const &) = delete;
    LogCapture &operator=(LogCapture const &) = delete;

    /// The lines since the last call.
    std::vector<std::string> Take() {
        std::lock_guard const lock(lines_->guard);
        return std::exchange(lines_->texts, {});
    }

    bool Contains(std::string const &text) {
        std::lock_guard const lock(lines_->guard);
        return std::any_of(lines_->texts.begin(), lines_->texts.end(),
                           [&](auto const &line) { return line.find(text) != line.npos; });
    }

  private:
    struct Lines : booster::log::sink {
        void log(booster::log::message const &message) override {
            std::lock_guard const lock(guard);
            texts.push_back(booster::log::logger::level_to_string(message.level()) +
                            (": " + message.log_message() + " (" + message.file_name() + ')'));
        }
        std::mutex guard;
        std::vector<std::string> texts;
    };

    static booster::log::logger &logger() { return booster::log::logger::instance(); }

    char const *module_;
    booster::shared_ptr<Lines> lines_;
};

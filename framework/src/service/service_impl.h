#pragma once

#include <booster/locale/generator.h>
#include <cppcms/applications_pool.h>
#include <cppcms/service.h>
#include <cppcms/views_pool.h>
#include <fronts/connection.h>
#include <fronts/server.h>

#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "cached_settings.h"
#include "event_loop.h"
#include "mount_table.h"
#include "places.h"

namespace cppcms::impl {

/// What is behind a service.
class service : public booster::noncopyable {
  public:
    service(cppcms::service &owner, json::value const &settings);

    json::value const &settings() const { return settings_; }
    cached_settings const &cached() const { return cached_; }
    booster::locale::generator const &generator() const { return generator_; }
    std::locale const &locale() const { return locale_; }
    views::manager &views() { return views_; }
    cppcms::applications_pool &pool() { return pool_; }
    event_loop &loop() { return loop_; }

    void run();
    void request_stop();
    void after_fork(booster::function<void()> const &task) { after_fork_.push_back(task); }
    /// A request is over; its connection may bring another one.
    void release(std::unique_ptr<connection> c);
    /// See server::await.
    void await_input(connection &c, server::clock::time_point deadline, bool at_once,
                     booster::function<void()> const &resume);
    bool is_large_body(unsigned long long bytes) const {
        return cached_.limits.most_large && bytes >= cached_.limits.large;
    }
    places &large_bodies() { return large_bodies_; }

  private:
    std::unique_ptr<connection> make_connection(listener const &from, descriptor client);
    void serve(std::unique_ptr<connection> from, environment &&variables);
    void wait_for_stop();
    void stop();

    cppcms::service &owner_;
    json::value const settings_;
    cached_settings const cached_;
    booster::locale::generator generator_;
    std::locale locale_;
    connection_registry connections_;
    descriptor stop_event_;
    int const timeout_;  // seconds of each wait for a client
    places large_bodies_;
    std::vector<booster::function<void()>> after_fork_;
    std::mutex guard_;
    std::exception_ptr failure_;
    views::manager views_;
    cppcms::applications_pool pool_;
    event_loop loop_;
    std::unique_ptr<server> server_;
};

}  // namespace cppcms::impl

#pragma once

#include <booster/function.h>
#include <booster/noncopyable.h>
#include <cppcms/json.h>

#include <locale>
#include <memory>
#include <string>

namespace booster::locale {
class generator;
}

namespace cppcms {

class applications_pool;

namespace views {
class manager;
}

namespace impl {
class service;
}

/// A web service: settings, the applications mounted on it, and the fronts through which requests come.
class service : public booster::noncopyable {
  public:
    /// The settings that a command line names: `-c FILE` (or the variable CPPCMS_CONFIG), then switches
    /// `--a-b=VALUE` that override it. Throws cppcms_error.
    static json::value load_settings(int argc, char *argv[]);

    service(json::value const &settings);
    service(int argc, char *argv[]);
    ~service();

    /// Serves until shutdown(), or until SIGINT, SIGTERM or SIGUSR1 comes. Then the requests at hand are
    /// finished, within limits. Once for each service. Throws cppcms_error for contradictory settings,
    /// booster::system::system_error where a socket cannot be had, and what a posted function throws.
    void run();
    /// Makes run() return. From any thread.
    void shutdown();

    json::value const &settings();
    cppcms::applications_pool &applications_pool();
    views::manager &views_pool();

    booster::locale::generator const &generator();
    /// The first of the configured locales.
    std::locale locale();
    std::locale locale(std::string const &name);

    /// Calls \a task on the thread of the event loop.
    void post(booster::function<void()> const &task);
    /// Calls \a task when the service starts to run, in the process that does.
    void after_fork(booster::function<void()> const &task);

    /// Number of worker threads.
    int threads_no();
    /// Number of worker processes; 0: requests are served in this one.
    int procs_no() { return 0; }
    int process_id() { return 0; }

    /// Internal.
    impl::service *impl() { return impl_.get(); }

  private:
    std::unique_ptr<impl::service> impl_;
};

}  // namespace cppcms

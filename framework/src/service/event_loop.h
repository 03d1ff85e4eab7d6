#pragma once

#include <booster/noncopyable.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace cppcms::impl {

/// A thread that does one thing at a time, in the order in which they were posted.
class event_loop : public booster::noncopyable {
  public:
    using task = std::function<void()>;
    using clock = std::chrono::steady_clock;

    /// \a on_failure is called on the thread when a task throws; no task runs after that.
    explicit event_loop(std::function<void(std::exception_ptr)> on_failure)
        : on_failure_(std::move(on_failure)) {}
    ~event_loop();

    /// From any thread, also before start(). After stop() tasks are dropped.
    void post(task t);
    void start();
    /// Runs what was posted, but begins nothing after \a deadline; then ends the thread.
    void stop(clock::time_point deadline);

  private:
    void work();
    task take();

    std::function<void(std::exception_ptr)> on_failure_;
    std::mutex guard_;
    std::condition_variable changed_;
    std::deque<task> tasks_;
    bool stopping_ = false;
    clock::time_point deadline_ = clock::time_point::max();
    std::thread thread_;
};

}  // namespace cppcms::impl

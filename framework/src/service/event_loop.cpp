#include "event_loop.h"

#include <utility>

namespace cppcms::impl {

event_loop::~event_loop() {
    stop(clock::now());
}

void event_loop::post(task t) {
    std::lock_guard const lock(guard_);
    if (stopping_)
        return;
    tasks_.push_back(std::move(t));
    changed_.notify_one();
}

void event_loop::start() {
    thread_ = std::thread([this] { work(); });
}

void event_loop::stop(clock::time_point deadline) {
    std::thread thread;
    std::deque<task> dropped;
    {
        std::lock_guard const lock(guard_);
        stopping_ = true;
        deadline_ = deadline;
        thread = std::move(thread_);
        changed_.notify_one();
    }
    if (thread.joinable())
        thread.join();
    std::lock_guard const lock(guard_);
    dropped.swap(tasks_);
}

void event_loop::work() {
    while (task const next = take()) {
        try {
            next();
        } catch (...) {
            on_failure_(std::current_exception());
            return;
        }
    }
}

/// Waits for a task. An empty one says that it is time to end.
event_loop::task event_loop::take() {
    std::unique_lock lock(guard_);
    changed_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
    if (tasks_.empty() || clock::now() >= deadline_)
        return nullptr;
    task next = std::move(tasks_.front());
    tasks_.pop_front();
    return next;
}

}  // namespace cppcms::impl

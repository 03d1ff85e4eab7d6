#pragma once

#include <booster/noncopyable.h>
#include <http/environment.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "connection.h"
#include "listener.h"

namespace cppcms::impl {

/// Threads that wait, all of them for all sockets, and serve what comes. The thread that accepts a client
/// reads its request and serves it; a client that has yet to send occupies no thread.
class server : public booster::noncopyable {
  public:
    using clock = std::chrono::steady_clock;
    /// Serves one request. The connection, when done with, goes back by release().
    using request_handler = std::function<void(std::unique_ptr<connection>, environment &&)>;
    using connection_factory = std::function<std::unique_ptr<connection>(listener const &, descriptor)>;

    server(std::vector<listener> listeners, connection_factory make, request_handler handle);
    /// Stops at once.
    ~server();

    /// Starts \a threads threads, with all signals blocked.
    void start(int threads);
    /// A request is over: the connection waits for the next one, if it may bring one. From any thread.
    void release(std::unique_ptr<connection> c);
    /// Drops the clients that have been silent for too long.
    void drop_silent();
    /// Takes no new clients, but serves the requests that have come already. Returns when the threads have
    /// ended, true, or at the \a deadline.
    bool stop(clock::time_point deadline);
    /// Waits for the threads, then drops all clients that wait for their next request.
    void join();

  private:
    struct waiting_client {
        std::unique_ptr<connection> owned;
        clock::time_point deadline;
    };

    void work();
    bool work_once(bool draining);
    void accept(listener const &from);
    descriptor accept_one(listener const &from);
    void serve(std::unique_ptr<connection> c);
    void park(std::unique_ptr<connection> c);
    std::unique_ptr<connection> take(connection *c);
    bool drop_oldest();
    void watch(int operation, listener const &l);

    std::vector<listener> listeners_;
    connection_factory make_;
    request_handler handle_;
    descriptor epoll_;
    descriptor wake_;  // counts the threads that have yet to be told to end

    std::mutex guard_;
    std::condition_variable thread_ended_;
    std::unordered_map<connection *, waiting_client> waiting_;
    bool ended_ = false;  // nobody serves who waits
    std::size_t running_ = 0;
    std::vector<std::thread> threads_;
    std::atomic<bool> stopping_{false};
};

}  // namespace cppcms::impl

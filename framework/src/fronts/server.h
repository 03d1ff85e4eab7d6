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
/// reads its request and serves it; a client that has yet to send, whatever of its request, occupies no
/// thread.
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
    /// \a c, which somebody else owns, has yet to send a part of its request's body: \a resume, which is to
    /// own that, is called on one of the threads when more has come, at once where \a at_once, or at the \a
    /// deadline.
    void await(connection &c, clock::time_point deadline, bool at_once, std::function<void()> resume);
    /// Drops the clients that have been silent for too long, and resumes the requests that are late.
    void end_waiting();
    /// Takes no new clients, but serves the requests that have come already, and those that come soon: of a
    /// client that was just let in, or whose request has begun. Returns when the threads have ended, true, or
    /// at the \a deadline.
    bool stop(clock::time_point deadline);
    /// Waits for the threads, then drops all clients that wait for their next request.
    void join();

  private:
    struct waiting_client {
        std::unique_ptr<connection> owned;  // not set where a request is resumed
        clock::time_point deadline;
        bool is_expected = false;  // to bring a request, of which no byte need have come yet
        std::function<void()> resume = {};
    };

    void work();
    bool work_once(bool draining);
    void accept(listener const &from);
    descriptor accept_one(listener const &from);
    void serve(std::unique_ptr<connection> c);
    void serve(connection *c);
    void linger(std::unique_ptr<connection> c, clock::time_point deadline);
    void park(std::unique_ptr<connection> c, bool at_once, bool is_expected);
    void park(connection &c, bool at_once, waiting_client client);
    bool watch(connection const &c, bool at_once);
    void watch(int operation, listener const &l);
    bool is_request_expected();
    bool drop_oldest();

    std::vector<listener> listeners_;
    connection_factory make_;
    request_handler handle_;
    descriptor epoll_;
    descriptor wake_;  // counts the threads that have yet to be told to end

    std::mutex guard_;
    std::condition_variable thread_ended_;
    std::unordered_map<connection *, waiting_client> waiting_;
    bool ended_ = false;                                             // nobody serves who waits
    clock::time_point arrival_deadline_ = clock::time_point::max();  // while it stops
    std::size_t running_ = 0;
    std::vector<std::thread> threads_;
    std::atomic<bool> stopping_{false};
};

}  // namespace cppcms::impl

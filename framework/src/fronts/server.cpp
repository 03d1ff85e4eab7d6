#include "server.h"

#include <booster/log.h>
#include <booster/system_error.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

namespace cppcms::impl {

namespace {

descriptor checked(int fd) {
    if (fd < 0)
        throw booster::system::system_error(std::error_code(errno, std::system_category()));
    return descriptor(fd);
}

/// Threads that are started meanwhile have all signals blocked.
class signals_blocked : public booster::noncopyable {
  public:
    signals_blocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~signals_blocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_{};
};

/// How long an answer that was sent before the request had come may take to arrive.
constexpr auto linger_patience = std::chrono::seconds(2);
/// How long requests that are on their way may hold the end of all: nobody is let in meanwhile.
constexpr auto arrival_patience = std::chrono::seconds(2);
/// How often a thread that is to end looks whether it may.
constexpr auto drain_interval = std::chrono::milliseconds(10);

}  // namespace

server::server(std::vector<listener> listeners, connection_factory make, request_handler handle)
    : listeners_(std::move(listeners)),
      make_(std::move(make)),
      handle_(std::move(handle)),
      epoll_(checked(::epoll_create1(EPOLL_CLOEXEC))),
      wake_(checked(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE))) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.ptr = &wake_;
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, wake_.get(), &event);
    for (listener const &l : listeners_)
        watch(EPOLL_CTL_ADD, l);
}

server::~server() {
    stop(clock::now());
    join();
}

void server::start(int threads) {
    signals_blocked const guard;
    for (int i = 0; i < threads; ++i) {
        std::lock_guard const lock(guard_);
        threads_.emplace_back([this] { work(); });
        ++running_;
    }
}

bool server::stop(clock::time_point deadline) {
    {
        std::lock_guard const lock(guard_);
        arrival_deadline_ = std::min(deadline, clock::now() + arrival_patience);
    }
    if (!stopping_.exchange(true)) {
        for (listener &l : listeners_) {
            ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, l.socket, nullptr);
            // Who waits at a socket of ours would be turned away by its end; an inherited one keeps them. A
            // thread may still be at the socket: it is closed when they have ended.
            while (l.owned.get() >= 0 && clock::now() < deadline) {
                descriptor client = accept_one(l);
                if (client.get() < 0)
                    break;
                park(make_(l, std::move(client)), false, true);
            }
        }
        std::uint64_t const count = std::max<std::size_t>(1, threads_.size());
        [[maybe_unused]] auto const written = ::write(wake_.get(), &count, sizeof(count));
    }
    std::unique_lock lock(guard_);
    return thread_ended_.wait_until(lock, deadline, [this] { return running_ == 0; });
}

void server::join() {
    for (std::thread &thread : threads_)
        thread.join();
    threads_.clear();
    listeners_.clear();
    std::lock_guard const lock(guard_);
    ended_ = true;
    waiting_.clear();
}

void server::work() {
    // Who gives up the processor between requests is not stopped within one as often, with a client that
    // waits.
    while (work_once(false))
        std::this_thread::yield();
    for (;;) {
        if (work_once(true))
            continue;
        if (!is_request_expected())
            break;
        std::this_thread::sleep_for(drain_interval);
    }
    std::lock_guard const lock(guard_);
    --running_;
    thread_ended_.notify_all();
}

/// Serves one event. False when told to end or, while \a draining, when there is nothing left to do.
bool server::work_once(bool draining) {
    // While draining the wake event may be there too, for other threads: room for it and for a client.
    std::array<epoll_event, 2> events;
    int const count = ::epoll_wait(epoll_.get(), events.data(), draining ? 2 : 1, draining ? 0 : -1);
    bool served = count < 0;  // interrupted: as good as any event
    for (int i = 0; i < count; ++i) {
        void *const source = events[static_cast<std::size_t>(i)].data.ptr;
        auto const listening = std::find_if(listeners_.begin(), listeners_.end(),
                                            [&](listener const &l) { return &l == source; });
        if (source == &wake_) {
            std::uint64_t one = 0;
            if (!draining && ::read(wake_.get(), &one, sizeof(one)) > 0)
                return false;
            continue;
        }
        served = true;
        try {
            if (listening != listeners_.end())
                accept(*listening);
            else
                serve(static_cast<connection *>(source));
        } catch (std::exception const &e) {
            BOOSTER_ERROR("cppcms") << "Failed to serve a request: " << e.what();
        }
    }
    return served || !draining;
}

void server::accept(listener const &from) {
    descriptor client = accept_one(from);
    // The next client is for another thread.
    watch(EPOLL_CTL_MOD, from);
    if (client.get() >= 0)
        serve(make_(from, std::move(client)));
}

/// The descriptor is not set where nobody waits, or nobody can be let in now.
descriptor server::accept_one(listener const &from) {
    for (;;) {
        descriptor client(::accept4(from.socket, nullptr, nullptr, SOCK_CLOEXEC));
        if (client.get() >= 0 || errno == EAGAIN)
            return client;
        if (errno == EINTR || errno == ECONNABORTED || errno == EPROTO)
            continue;
        int const problem = errno;
        BOOSTER_ERROR("cppcms") << "Failed to accept a client: " << std::strerror(problem);
        if ((problem == EMFILE || problem == ENFILE) && drop_oldest())
            continue;
        // Some request has to end first.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return client;
    }
}

/// Drops the client that has been waiting longest. False where none is waiting.
bool server::drop_oldest() {
    waiting_client dropped;
    std::lock_guard const lock(guard_);
    auto const oldest = std::min_element(waiting_.begin(), waiting_.end(), [](auto const &a, auto const &b) {
        return a.second.deadline < b.second.deadline;
    });
    if (oldest == waiting_.end())
        return false;
    dropped = std::move(oldest->second);
    waiting_.erase(oldest);
    return true;
}

void server::watch(int operation, listener const &l) {
    // Once, so that one thread wakes up for a client and not all of them.
    epoll_event event{};
    event.events = EPOLLIN | EPOLLONESHOT;
    event.data.ptr = const_cast<listener *>(&l);
    ::epoll_ctl(epoll_.get(), operation, l.socket, &event);
}

bool server::watch(connection const &c, bool at_once) {
    epoll_event event{};
    // What is there already makes no event of its own; being writable does.
    event.events = EPOLLONESHOT | EPOLLIN | (at_once ? EPOLLOUT : 0u);
    event.data.ptr = const_cast<connection *>(&c);
    return ::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, c.descriptor(), &event) == 0 ||
           ::epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, c.descriptor(), &event) == 0;
}

/// Serves a client that has waited.
void server::serve(connection *c) {
    waiting_client client;
    {
        std::lock_guard const lock(guard_);
        auto const found = waiting_.find(c);
        if (found == waiting_.end())
            return;
        client = std::move(found->second);
        waiting_.erase(found);
    }
    if (client.resume)
        client.resume();
    else if (client.owned->has_abandoned_body())
        linger(std::move(client.owned), client.deadline);
    else
        serve(std::move(client.owned));
}

void server::serve(std::unique_ptr<connection> c) {
    environment variables;
    switch (c->read_head(variables)) {
        case connection::input::complete:
            handle_(std::move(c), std::move(variables));
            break;
        case connection::input::incomplete:
            park(std::move(c), false, true);
            break;
        case connection::input::closed:
            linger(std::move(c), clock::now() + linger_patience);
            break;
    }
}

void server::release(std::unique_ptr<connection> c) {
    if (!c->finish())
        linger(std::move(c), clock::now() + linger_patience);
    else if (bool const has_input = c->has_input(); !stopping_ || has_input)
        park(std::move(c), has_input, has_input);
}

/// Closes the connection, when the client has taken the answer to a body that it still sends.
void server::linger(std::unique_ptr<connection> c, clock::time_point deadline) {
    if (!c->has_abandoned_body() || !c->drain())
        return;
    connection &client = *c;
    park(client, false, {std::move(c), deadline, false});
}

void server::park(std::unique_ptr<connection> c, bool at_once, bool is_expected) {
    int const limit = c->idle_limit();
    auto const deadline = limit > 0 ? clock::now() + std::chrono::seconds(limit) : clock::time_point::max();
    connection &client = *c;
    park(client, at_once, {std::move(c), deadline, is_expected});
}

void server::await(connection &c, clock::time_point deadline, bool at_once, std::function<void()> resume) {
    park(c, at_once, {nullptr, deadline, true, std::move(resume)});
}

void server::park(connection &c, bool at_once, waiting_client client) {
    // From the moment that the event is set another thread may take the client.
    std::lock_guard const lock(guard_);
    if (ended_)
        return;
    waiting_[&c] = std::move(client);
    if (!watch(c, at_once))
        waiting_.erase(&c);
}

void server::end_waiting() {
    std::vector<std::unique_ptr<connection>> dropped;
    auto const now = clock::now();
    std::lock_guard const lock(guard_);
    for (auto client = waiting_.begin(); client != waiting_.end();) {
        if (client->second.deadline > now) {
            ++client;
        } else if (client->second.resume) {
            client->second.deadline = clock::time_point::max();
            watch(*client->first, true);
            ++client;
        } else {
            dropped.push_back(std::move(client->second.owned));
            client = waiting_.erase(client);
        }
    }
}

/// Whether a request that is on its way may still be served.
bool server::is_request_expected() {
    std::lock_guard const lock(guard_);
    return clock::now() < arrival_deadline_ &&
           std::any_of(waiting_.begin(), waiting_.end(),
                       [](auto const &client) { return client.second.is_expected; });
}

}  // namespace cppcms::impl

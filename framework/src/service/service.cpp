#include <booster/locale.h>
#include <booster/log.h>
#include <booster/system_error.h>
#include <cppcms/http_context.h>
#include <cppcms/service.h>
#include <fronts/fastcgi_connection.h>
#include <fronts/http_connection.h>
#include <fronts/listener.h>
#include <http/spool_buffer.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <optional>

#include "log_setup.h"
#include "request_cycle.h"
#include "service_impl.h"
#include "stop_signals.h"

namespace cppcms {

namespace impl {

namespace {

/// How long requests at hand may take to finish when the service stops.
constexpr auto stop_patience = std::chrono::seconds(10);
constexpr int sweep_interval = 1000;  // milliseconds

/// The first of the configured locales, "" for that of the system.
std::string default_locale(json::value const &settings) {
    auto const names = settings.get("localization.locales", std::vector<std::string>());
    return names.empty() ? std::string() : names.front();
}

descriptor make_event() {
    descriptor event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (event.get() < 0)
        throw booster::system::system_error(std::error_code(errno, std::system_category()));
    return event;
}

/// Settings of the framework's API that change nothing here.
constexpr std::array unsupported{
    "daemon.enable", "localization.backend", "file_server.enable",       "forwarding.rules",
    "http.rewrite",  "http.proxy.behind",    "service.worker_processes", "session.location"};

void warn_of_unsupported(json::value const &settings) {
    for (char const *key : unsupported) {
        json::value const &found = settings.find(key);
        bool const off = found.is_undefined() || found == json::value(false) || found == json::value(0) ||
                         found == json::value("none") || found == json::value(json::array());
        if (!off)
            BOOSTER_WARNING("cppcms") << "The setting " << key << " is not supported, it has no effect";
    }
}

void block_broken_pipe() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

}  // namespace

service::service(cppcms::service &owner, json::value const &settings)
    : owner_(owner),
      settings_(settings),
      cached_(settings),
      stop_event_(make_event()),
      timeout_(settings.get("http.timeout", 30)),
      large_bodies_(cached_.limits.most_large.value_or(0)),
      views_(settings),
      pool_(owner),
      loop_([this](std::exception_ptr problem) {
          {
              std::lock_guard const lock(guard_);
              failure_ = std::move(problem);
          }
          request_stop();
      }) {
    using names = std::vector<std::string>;
    for (std::string const &path : settings.get("localization.messages.paths", names()))
        generator_.add_messages_path(path);
    for (std::string const &domain : settings.get("localization.messages.domains", names()))
        generator_.add_messages_domain(domain);
    locale_ = generator_(default_locale(settings));
}

void service::run() {
    block_broken_pipe();
    warn_of_unsupported(settings_);
    server_ = std::make_unique<server>(
        open_listeners(settings_, cached_.threads),
        [this](listener const &from, descriptor client) { return make_connection(from, std::move(client)); },
        [this](std::unique_ptr<connection> from, environment &&variables) {
            auto const context =
                std::make_shared<http::context>(owner_, std::move(from), std::move(variables));
            serve_request(context, cached_.rules, pool_.table(), loop_,
                          cached_.response.display_error_message);
        });
    for (auto const &task : after_fork_)
        task();

    std::optional<stop_signals> signals;
    if (!settings_.get("service.disable_global_exit_handling", false))
        signals.emplace(stop_event_.get());
    remove_left_over_uploads(cached_.limits.uploads_path);
    loop_.start();
    server_->start(cached_.threads);
    wait_for_stop();
    stop();

    std::lock_guard const lock(guard_);
    if (failure_)
        std::rethrow_exception(failure_);
}

void service::wait_for_stop() {
    pollfd event{stop_event_.get(), POLLIN, 0};
    while (::poll(&event, 1, sweep_interval) <= 0)
        server_->end_waiting();
}

void service::stop() {
    auto const deadline = std::chrono::steady_clock::now() + stop_patience;
    if (!server_->stop(deadline)) {
        BOOSTER_WARNING("cppcms") << "Requests that do not finish are cut off";
        connections_.shut_down_all();
    }
    server_->join();
    // What is open now belongs to asynchronous requests.
    connections_.wait_until_empty(deadline);
    loop_.stop(deadline);
}

void service::request_stop() {
    std::uint64_t const one = 1;
    [[maybe_unused]] auto const written = ::write(stop_event_.get(), &one, sizeof(one));
}

void service::release(std::unique_ptr<connection> c) {
    // Without a server the request was made by a test or a tool: there is nothing to go back to.
    if (server_)
        server_->release(std::move(c));
}

void service::await_input(connection &c, server::clock::time_point deadline, bool at_once,
                          booster::function<void()> const &resume) {
    server_->await(c, deadline, at_once, resume);
}

std::unique_ptr<connection> service::make_connection(listener const &from, descriptor client) {
    if (from.http)
        return std::make_unique<http_connection>(client.release(), connections_, from.http);
    return std::make_unique<fastcgi_connection>(client.release(), connections_, timeout_);
}

}  // namespace impl

service::service(json::value const &settings) {
    impl::set_up_log(settings);
    impl_ = std::make_unique<impl::service>(*this, settings);
}

service::service(int argc, char *argv[]) : service(load_settings(argc, argv)) {}

service::~service() = default;

void service::run() {
    impl_->run();
}

void service::shutdown() {
    impl_->request_stop();
}

json::value const &service::settings() {
    return impl_->settings();
}

cppcms::applications_pool &service::applications_pool() {
    return impl_->pool();
}

views::manager &service::views_pool() {
    return impl_->views();
}

booster::locale::generator const &service::generator() {
    return impl_->generator();
}

std::locale service::locale() {
    return impl_->locale();
}

std::locale service::locale(std::string const &name) {
    return impl_->generator().generate(name);
}

void service::post(booster::function<void()> const &task) {
    impl_->loop().post(task);
}

void service::after_fork(booster::function<void()> const &task) {
    impl_->after_fork(task);
}

int service::threads_no() {
    return impl_->cached().threads;
}

}  // namespace cppcms

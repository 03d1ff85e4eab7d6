#pragma once

#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/http_context.h>
#include <cppcms/http_file.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/mount_point.h>
#include <cppcms/service.h>
#include <poll.h>

#include <atomic>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <chrono>
#include <future>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/unit/util/LogCapture.h"

/// What the test applications count.
struct Counters {
    std::atomic<int> status_calls{0};
    std::atomic<int> status_calls_at_once{0};
    std::atomic<int> most_status_calls_at_once{0};
};

/// Pages: the URL says what to do.
class Pages : public cppcms::application {
  public:
    using application::application;

    void main(std::string url) override {
        if (url == "/hello")
            response().out() << "hello";
        else if (url == "/big")
            response().out() << std::string(30000, 'x');
        else if (url == "/text")
            response().out() << std::string(5000, 't');
        else if (url == "/redirect")
            response().set_redirect_header("/elsewhere");
        else if (url == "/fail")
            throw std::runtime_error("it failed");
        else if (url == "/fail_late")
            response().out() << "begun", throw std::runtime_error("it failed late");
        else if (url == "/image")
            response().content_type("image/png"), response().out() << std::string(5000, 'i');
        else if (url == "/echo")
            Echo();
        else if (url.starts_with("/variables"))
            for (auto const &[name, value] : request().getenv())
                response().out() << name << '=' << value << '\n';
        else
            response().make_error_response(404);
    }

  private:
    void Echo() {
        auto &out = response().out();
        for (auto const &[name, value] : request().get())
            out << "get " << name << '=' << value << '\n';
        for (auto const &[name, value] : request().post())
            out << "post " << name << '=' << value << '\n';
        for (auto const &file : request().files())
            out << "file " << file->name() << ' ' << file->filename() << ' ' << file->size() << '\n';
        out << "raw " << request().raw_post_data().second << '\n';
    }
};

/// Status calls: one at a time.
class Status : public cppcms::application {
  public:
    Status(cppcms::service &service, Counters *counters) : application(service), counters_(*counters) {}

    void main(std::string url) override {
        int const now = ++counters_.status_calls_at_once;
        counters_.most_status_calls_at_once = std::max(now, counters_.most_status_calls_at_once.load());
        ++counters_.status_calls;
        if (url == "/slow")
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        response().out() << "status " << url << ' ' << is_asynchronous();
        --counters_.status_calls_at_once;
    }

  private:
    Counters &counters_;
};

/// Runs a service on a thread of its own while the object lives.
class ServiceThread {
  public:
    explicit ServiceThread(cppcms::service &service) : service_(service) {
        std::promise<void> listening;
        service_.after_fork([&] { listening.set_value(); });
        thread_ = std::thread([this] { service_.run(); });
        listening.get_future().wait();
    }
    ~ServiceThread() {
        service_.shutdown();
        thread_.join();
    }
    ServiceThread(ServiceThread const &) = delete;
    ServiceThread &operator=(ServiceThread const &) = delete;

  private:
    cppcms::service &service_;
    std::thread thread_;
};

/// A running service with both applications.
class RunningService {
  public:
    explicit RunningService(cppcms::json::value const &settings) : service_(settings) {
        service_.applications_pool().mount(cppcms::applications_factory<Pages>(),
                                           cppcms::mount_point("/pages(.*)", 1));
        service_.applications_pool().mount(status_, cppcms::mount_point("/status(.*)", 1));
        thread_.emplace(service_);
    }
    cppcms::service &Service() { return service_; }

    Counters counters;

  private:
    cppcms::service service_;
    booster::intrusive_ptr<cppcms::application> status_{new Status(service_, &counters)};
    std::optional<ServiceThread> thread_;
};

/// A TCP port that was free a moment ago.
inline int FreePort() {
    using boost::asio::ip::tcp;
    boost::asio::io_context context;
    return tcp::acceptor(context, tcp::endpoint(boost::asio::ip::address_v4::loopback(), 0))
        .local_endpoint()
        .port();
}

inline cppcms::json::value HttpSettings(int port) {
    cppcms::json::value settings;
    settings.set("service.api", "http");
    settings.set("service.port", port);
    settings.set("service.worker_threads", 3);
    settings.set("service.backlog", 64);
    settings.set("localization.locales", std::vector<std::string>{"C.UTF-8"});
    settings.set("logging.level", "debug");
    settings.set("logging.stderr", false);
    return settings;
}

/// A client's end of a connection. Its waits end after some seconds altogether.
class Client {
    using Protocol = boost::asio::generic::stream_protocol;

  public:
    explicit Client(int port)
        : Client(boost::asio::ip::tcp::endpoint(boost::asio::ip::address_v4::loopback(),
                                                static_cast<std::uint16_t>(port))) {}
    explicit Client(std::string const &path) : Client(boost::asio::local::stream_protocol::endpoint(path)) {}

    void Send(std::string_view bytes) { stream_ << bytes << std::flush; }
    bool ComesWithin(std::chrono::milliseconds time) {
        pollfd waiting{stream_.socket().native_handle(), POLLIN, 0};
        return ::poll(&waiting, 1, static_cast<int>(time.count())) > 0;
    }
    /// All that comes until the other end closes.
    std::string ReadAll() { return {std::istreambuf_iterator<char>(stream_.rdbuf()), {}}; }
    /// Reads until \a text has come, or all.
    std::string ReadUntil(std::string_view text) {
        std::string all;
        for (char c; !all.ends_with(text) && stream_.get(c);)
            all += c;
        return all;
    }

  private:
    explicit Client(Protocol::endpoint const &server) {
        stream_.expires_after(std::chrono::seconds(8));
        stream_.connect(server);
        if (!stream_)
            throw std::runtime_error("no connection to the service");
    }

    Protocol::iostream stream_;
};

/// The lines of the framework.
class LogLines : public LogCapture {
  public:
    LogLines() : LogCapture(booster::log::debug, "cppcms") {}
};

/// The answer to one HTTP request.
inline std::string Ask(int port, std::string const &request) {
    Client client(port);
    client.Send(request);
    return client.ReadAll();
}

inline std::string Get(int port, std::string const &target, std::string const &headers = "") {
    return Ask(port, "GET " + target + " HTTP/1.1\r\nHost: x\r\n" + headers + "\r\n");
}

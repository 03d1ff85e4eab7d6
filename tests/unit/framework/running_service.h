#pragma once

#include <arpa/inet.h>
#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/http_context.h>
#include <cppcms/http_file.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/mount_point.h>
#include <cppcms/service.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/unit/util/LogCapture.h"

/// What the test applications count.
struct Counters {
    std::atomic<int> pages_made{0};
    std::atomic<int> status_calls{0};
    std::atomic<int> status_calls_at_once{0};
    std::atomic<int> most_status_calls_at_once{0};
};

/// Pages: the URL says what to do.
class Pages : public cppcms::application {
  public:
    Pages(cppcms::service &service, Counters *counters) : application(service) {
        if (counters->pages_made++ == 0 && settings().get("test.first_page_fails", false))
            throw std::runtime_error("no page");
    }

    void main(std::string url) override {
        using http_response = cppcms::http::response;
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
        else if (url == "/fail_oddly")
            throw 1;
        else if (url == "/slow")
            std::this_thread::sleep_for(std::chrono::milliseconds(300)), response().out() << "slow";
        else if (url == "/stop")
            service().shutdown(), response().out() << "stopping";
        else if (url == "/echo")
            Echo();
        else if (url == "/variables")
            for (auto const &[name, value] : request().getenv())
                response().out() << name << '=' << value << '\n';
        else if (url == "/raw")
            response().io_mode(http_response::raw), response().out() << "Status: 299 Raw\nX-Raw: 1\n\nbody";
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
        if (url == "/stop")
            service().shutdown();
        else if (url == "/fail")
            response().out() << "lost", throw std::runtime_error("it failed");
        else
            response().out() << "status " << url << ' ' << is_asynchronous();
        --counters_.status_calls_at_once;
    }

  private:
    Counters &counters_;
};

/// A service with both applications that runs on a thread of its own.
class RunningService {
  public:
    explicit RunningService(cppcms::json::value const &settings) : service_(settings) {
        service_.applications_pool().mount(cppcms::applications_factory<Pages>(&counters),
                                           cppcms::mount_point("/pages(.*)", 1));
        status_ = new Status(service_, &counters);
        service_.applications_pool().mount(status_, cppcms::mount_point("/status(.*)", 1));
        std::promise<void> listening;
        service_.after_fork([&] { listening.set_value(); });
        thread_ = std::thread([this] { service_.run(); });
        listening.get_future().wait();
    }
    ~RunningService() {
        service_.shutdown();
        Wait();
        status_ = nullptr;
    }

    /// Returns when run() has returned.
    void Wait() {
        if (thread_.joinable())
            thread_.join();
    }
    cppcms::service &Service() { return service_; }

    Counters counters;

  private:
    cppcms::service service_;
    booster::intrusive_ptr<cppcms::application> status_;
    std::thread thread_;
};

/// A TCP port that was free a moment ago.
inline int FreePort() {
    int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    if (::bind(socket, reinterpret_cast<sockaddr *>(&address), size) != 0)
        throw std::runtime_error("no free port");
    ::getsockname(socket, reinterpret_cast<sockaddr *>(&address), &size);
    ::close(socket);
    return ntohs(address.sin_port);
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

/// A client's end of a connection. Every wait ends after some seconds.
class Client {
  public:
    explicit Client(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        Connect(AF_INET, &address, sizeof(address));
    }
    explicit Client(std::string const &path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        Connect(AF_UNIX, &address, sizeof(address));
    }
    ~Client() { ::close(socket_); }
    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    /// False where the other end does not take all of it.
    bool Send(std::string_view bytes) {
        while (!bytes.empty()) {
            ssize_t const sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }
    /// All that comes until the other end closes.
    std::string ReadAll() {
        std::string all;
        while (Read(all)) {
        }
        return all;
    }
    /// Reads until \a text has come.
    std::string ReadUntil(std::string_view text) {
        std::string all;
        while (all.find(text) == std::string::npos && Read(all)) {
        }
        return all;
    }
    bool Read(std::string &to) {
        char buffer[4096];
        ssize_t const got = ::recv(socket_, buffer, sizeof(buffer), 0);
        if (got > 0)
            to.append(buffer, static_cast<std::size_t>(got));
        return got > 0;
    }

  private:
    void Connect(int family, void const *address, socklen_t size) {
        socket_ = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
        timeval const limit{8, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
        ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
        if (::connect(socket_, static_cast<sockaddr const *>(address), size) != 0)
            throw std::runtime_error("no connection to the service");
    }

    int socket_ = -1;
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

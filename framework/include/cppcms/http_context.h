#pragma once

#include <booster/enable_shared_from_this.h>
#include <booster/function.h>
#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>

#include <locale>
#include <memory>
#include <string>

namespace cppcms {

class service;

namespace json {
class value;
}

namespace impl {
class connection;
class environment;
struct refusal;
}  // namespace impl

namespace http {

class request;
class response;

/// One request with its response, locale and skin.
class context : public booster::noncopyable, public booster::enable_shared_from_this<context> {
  public:
    enum completion_type { operation_completed, operation_aborted };
    typedef booster::function<void(completion_type)> handler;

    /// Internal: takes over a connection that has a request. \a srv must outlive the context.
    context(cppcms::service &srv, std::unique_ptr<impl::connection> from, impl::environment &&variables);
    /// A request that was not completed is dropped, its connection closed.
    ~context();

    http::request &request();
    http::response &response();
    json::value const &settings();
    cppcms::service &service();

    std::locale locale();
    void locale(std::string const &name);
    void locale(std::locale const &l);

    std::string skin();
    void skin(std::string const &name);

    /// Ends the response and the request. Whoever releases a context from its application calls one of them.
    void complete_response();
    void async_complete_response();
    /// Sends what was written so far, then calls \a h on the event loop.
    void async_flush_output(handler const &h);
    /// \a h is called on the event loop when sending finds that the client is gone.
    void async_on_peer_reset(booster::function<void()> const &h);

    /// An object of the application that lives as long as the request.
    template <typename T>
    T *get_specific() {
        if (!specific_)
            return nullptr;
        return dynamic_cast<specific_holder<T> &>(*specific_).object.get();
    }
    template <typename T>
    void reset_specific(T *object = nullptr) {
        specific_ = object ? std::make_unique<specific_holder<T>>(object) : nullptr;
    }
    template <typename T>
    T *release_specific() {
        if (!specific_)
            return nullptr;
        T *const object = dynamic_cast<specific_holder<T> &>(*specific_).object.release();
        specific_.reset();
        return object;
    }

    // Internal.

    impl::environment const &environment();
    /// Takes in the query and what has come of the body. False where it is to be called again: see
    /// await_body(). Where there is a \a problem the request has to be refused.
    bool load(impl::refusal &problem);
    /// \a resume is called, on some thread, when more of the body has come or its time is over.
    void await_body(booster::function<void()> const &resume);
    /// Ends the request with an error page, and the connection with it.
    void refuse(impl::refusal const &problem);

  private:
    struct holder {
        virtual ~holder() = default;
    };
    template <typename T>
    struct specific_holder : holder {
        explicit specific_holder(T *o) : object(o) {}
        std::unique_ptr<T> object;
    };

    struct data;
    std::unique_ptr<holder> specific_;
    std::unique_ptr<data> d;
};

}  // namespace http

}  // namespace cppcms

#pragma once

#include <booster/intrusive_ptr.h>
#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace cppcms {

class service;
class url_dispatcher;
class url_mapper;
class applications_pool;
class application;
class base_content;

namespace json {
class value;
}

namespace http {
class request;
class response;
class context;
}  // namespace http

namespace filters {
class streamable;
}

}  // namespace cppcms

namespace booster {

void intrusive_ptr_add_ref(cppcms::application *p);
void intrusive_ptr_release(cppcms::application *p);

}  // namespace booster

namespace cppcms {

/// A node of the application tree. The root is handed requests by the service; a child is reached by the
/// URL rules of its parent. All nodes of a tree share the root's request.
class application : public booster::noncopyable {
  public:
    application(cppcms::service &srv);
    /// Deletes the attached children, in the order in which they were attached.
    virtual ~application();

    cppcms::service &service();
    json::value const &settings();

    // The request being served. Outside of one they throw cppcms_error.
    http::context &context();
    http::request &request();
    http::response &response();

    url_dispatcher &dispatcher();
    url_mapper &mapper();

    /// Renders a view of the context's (or the given) skin to the response, or to the given stream.
    /// Throws cppcms_error for an unknown skin or view and for content of the wrong type.
    void render(std::string const &view, base_content &content);
    void render(std::string const &skin, std::string const &view, base_content &content);
    void render(std::string const &view, std::ostream &out, base_content &content);
    void render(std::string const &skin, std::string const &view, std::ostream &out, base_content &content);

    // add: make a child of `app`, which must outlive this object. attach: the same, and own it. A regular
    // expression with the group that is the child's URL mounts it in the dispatcher, a name with a pattern
    // of one parameter in the mapper.
    void add(application &app);
    void add(application &app, std::string const &regex, int part);
    void add(application &app, std::string const &name, std::string const &url);
    void add(application &app, std::string const &name, std::string const &url, std::string const &regex,
             int part);
    void attach(application *app);
    void attach(application *app, std::string const &regex, int part);
    void attach(application *app, std::string const &name, std::string const &url);
    void attach(application *app, std::string const &name, std::string const &url, std::string const &regex,
                int part);

    application *parent();
    application *root();

    booster::shared_ptr<http::context> get_context();
    booster::shared_ptr<http::context> release_context();
    void assign_context(booster::shared_ptr<http::context> context);
    bool has_context();
    bool owns_context();
    /// True for the root of an asynchronous mount only, not for applications attached to it.
    bool is_asynchronous();

    /// Serves the current request; the default dispatches \a url and answers 404 where no rule matches.
    virtual void main(std::string url);
    /// Called by the dispatcher before and after each of this application's member-function handlers.
    virtual void init();
    virtual void clear();

    std::string translate(char const *message);
    std::string translate(char const *context, char const *message);
    std::string translate(char const *single, char const *plural, int n);
    std::string translate(char const *context, char const *single, char const *plural, int n);

    /// The mapper's URL of \a key, written with the request's locale.
    std::string url(std::string const &key);
    std::string url(std::string const &key, filters::streamable const &p1);
    std::string url(std::string const &key, filters::streamable const &p1, filters::streamable const &p2);
    std::string url(std::string const &key, filters::streamable const &p1, filters::streamable const &p2,
                    filters::streamable const &p3);
    std::string url(std::string const &key, filters::streamable const &p1, filters::streamable const &p2,
                    filters::streamable const &p3, filters::streamable const &p4);
    std::string url(std::string const &key, filters::streamable const &p1, filters::streamable const &p2,
                    filters::streamable const &p3, filters::streamable const &p4,
                    filters::streamable const &p5);
    std::string url(std::string const &key, filters::streamable const &p1, filters::streamable const &p2,
                    filters::streamable const &p3, filters::streamable const &p4,
                    filters::streamable const &p5, filters::streamable const &p6);

  private:
    friend class applications_pool;
    friend void booster::intrusive_ptr_add_ref(application *p);
    friend void booster::intrusive_ptr_release(application *p);

    cppcms::service &service_;
    application *parent_ = nullptr;
    std::vector<std::unique_ptr<application>> children_;
    std::unique_ptr<url_dispatcher> dispatcher_;
    std::unique_ptr<url_mapper> mapper_;
    booster::shared_ptr<http::context> context_;  // of the root only
    bool asynchronous_ = false;                   // set by the pool
    std::atomic<long> references_{0};             // of the root only
    std::shared_ptr<application *> mounted_;      // made by the pool, whose mount ends with it
};

}  // namespace cppcms

#pragma once

#include <booster/enable_shared_from_this.h>
#include <booster/function.h>
#include <booster/intrusive_ptr.h>
#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>
#include <booster/weak_ptr.h>

#include <memory>
#include <tuple>
#include <utility>

namespace cppcms {

class service;
class application;
class mount_point;

namespace impl {
class mount_table;
}  // namespace impl

namespace app {

// How a pool of applications works.
constexpr int synchronous = 0x0000;   ///< on worker threads, an instance for each request at a time
constexpr int asynchronous = 0x0001;  ///< one instance, on the thread of the event loop
constexpr int op_mode_mask = 0x000F;
constexpr int thread_specific = 0x0010;
constexpr int prepopulated = 0x0020;  ///< all instances are made when the pool is mounted
constexpr int content_filter = 0x0040;
constexpr int legacy = 0x8000;  ///< set by the mounts that take a factory or an application

}  // namespace app

/// Makes the applications of a mount.
class application_specific_pool : public booster::noncopyable,
                                  public booster::enable_shared_from_this<application_specific_pool> {
  public:
    virtual ~application_specific_pool() = default;

  protected:
    /// A new instance, owned by the caller.
    virtual application *new_application(cppcms::service &srv) = 0;

  private:
    friend class applications_pool;
    bool mounted_ = false;
};

/// The applications of a service, each at its mount point. A request goes to the first mount that matches:
/// of all but the single asynchronous applications in the order of mounting, then of those.
class applications_pool : public booster::noncopyable {
  public:
    class factory : public booster::noncopyable {
      public:
        virtual std::unique_ptr<application> operator()(service &srv) const = 0;
        virtual ~factory() = default;
    };

    explicit applications_pool(service &srv);
    ~applications_pool();

    // Synchronous: instances are made when needed, at most one for each worker thread, and reused.
    void mount(std::unique_ptr<factory> made_by);
    void mount(std::unique_ptr<factory> made_by, mount_point const &at);
    // Asynchronous: one object, called on the event loop. When the references that exist beside the mount
    // are gone, so is the application, and the mount is skipped.
    void mount(booster::intrusive_ptr<application> app);
    void mount(booster::intrusive_ptr<application> app, mount_point const &at);
    /// Throws cppcms_error for app::legacy and for a pool that is mounted already.
    void mount(booster::shared_ptr<application_specific_pool> pool, int flags = 0);
    void mount(booster::shared_ptr<application_specific_pool> pool, mount_point const &at, int flags = 0);
    void unmount(booster::weak_ptr<application_specific_pool> pool);

    /// Internal.
    impl::mount_table &table() { return *table_; }

  private:
    service &service_;
    std::unique_ptr<impl::mount_table> table_;
};

namespace details {

template <typename T, typename... Parameters>
class factory_of : public applications_pool::factory {
  public:
    explicit factory_of(Parameters... parameters) : parameters_(std::move(parameters)...) {}
    std::unique_ptr<application> operator()(service &srv) const override {
        return std::apply([&](auto const &...p) { return std::make_unique<T>(srv, p...); }, parameters_);
    }

  private:
    std::tuple<Parameters...> parameters_;
};

template <typename T>
using simple_factory0 = factory_of<T>;
template <typename T, typename P1>
using simple_factory1 = factory_of<T, P1>;
template <typename T, typename P1, typename P2>
using simple_factory2 = factory_of<T, P1, P2>;

template <typename T, typename... Parameters>
class pool_of : public application_specific_pool {
  public:
    explicit pool_of(Parameters... parameters) : factory_(std::move(parameters)...) {}

  protected:
    application *new_application(cppcms::service &srv) override { return factory_(srv).release(); }

  private:
    factory_of<T, Parameters...> factory_;
};

}  // namespace details

/// A factory of applications with a constructor T(service &, parameters...).
template <typename T, typename... Parameters>
std::unique_ptr<applications_pool::factory> applications_factory(Parameters... parameters) {
    return std::make_unique<details::factory_of<T, Parameters...>>(std::move(parameters)...);
}

/// A pool of applications with a constructor T(service &, parameters...).
template <typename T, typename... Parameters>
booster::shared_ptr<application_specific_pool> create_pool(Parameters... parameters) {
    return std::make_shared<details::pool_of<T, Parameters...>>(std::move(parameters)...);
}

}  // namespace cppcms

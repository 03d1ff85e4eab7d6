#pragma once

#include <booster/function.h>
#include <booster/intrusive_ptr.h>
#include <booster/noncopyable.h>

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

}  // namespace details

/// A factory of applications with a constructor T(service &, parameters...).
template <typename T, typename... Parameters>
std::unique_ptr<applications_pool::factory> applications_factory(Parameters... parameters) {
    return std::make_unique<details::factory_of<T, Parameters...>>(std::move(parameters)...);
}

}  // namespace cppcms

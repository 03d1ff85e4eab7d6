#pragma once

#include <booster/intrusive_ptr.h>
#include <booster/noncopyable.h>
#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/mount_point.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

namespace cppcms::impl {

/// Where the applications of one mount come from. Used by several threads at once.
class application_source : public booster::noncopyable {
  public:
    explicit application_source(bool asynchronous) : asynchronous_(asynchronous) {}
    virtual ~application_source() = default;

    /// Whether its applications run on the event loop.
    bool is_asynchronous() const { return asynchronous_; }
    /// False when there will be no application any more.
    virtual bool is_alive() const { return true; }
    /// An application for one request, a null pointer where there is none. Throws what its constructor does.
    virtual booster::intrusive_ptr<application> take() = 0;
    virtual void give_back(booster::intrusive_ptr<application> const & /*app*/) {}

  private:
    bool asynchronous_;
};

/// Makes applications when they are needed and keeps them; the one returned last is the next to be used.
class application_cache : public application_source {
  public:
    using maker = std::function<std::unique_ptr<application>()>;

    explicit application_cache(maker make) : application_source(false), make_(std::move(make)) {}

    booster::intrusive_ptr<application> take() override;
    void give_back(booster::intrusive_ptr<application> const &app) override;

  private:
    maker make_;
    std::mutex guard_;
    std::vector<booster::intrusive_ptr<application>> idle_;
};

/// One application that lives elsewhere.
class single_application : public application_source {
  public:
    /// \a owner, if set, keeps the application alive.
    single_application(std::weak_ptr<application *> app, booster::intrusive_ptr<application> owner)
        : application_source(true), app_(std::move(app)), owner_(std::move(owner)) {}

    bool is_alive() const override { return !app_.expired(); }
    booster::intrusive_ptr<application> take() override;

  private:
    std::weak_ptr<application *> app_;
    booster::intrusive_ptr<application> owner_;
};

/// The mounts of a service.
class mount_table : public booster::noncopyable {
  public:
    struct match {
        std::shared_ptr<application_source> source;
        std::string url;
    };

    /// Mounts that are \a secondary are tried after all others.
    void add(mount_point const &at, std::shared_ptr<application_source> source, bool secondary);
    std::optional<match> find(std::string const &host, std::string const &script,
                              std::string const &path) const;

  private:
    struct mount {
        mount_point point;
        std::shared_ptr<application_source> source;
    };

    mutable std::shared_mutex guard_;
    std::vector<mount> primary_;
    std::vector<mount> secondary_;
};

}  // namespace cppcms::impl

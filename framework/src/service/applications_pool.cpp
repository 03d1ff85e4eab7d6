#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/mount_point.h>
#include <cppcms/service.h>

#include "mount_table.h"

namespace cppcms {

applications_pool::applications_pool(service &srv)
    : service_(srv), table_(std::make_unique<impl::mount_table>()) {}

applications_pool::~applications_pool() = default;

void applications_pool::mount(std::unique_ptr<factory> made_by) {
    mount(std::move(made_by), mount_point());
}

void applications_pool::mount(std::unique_ptr<factory> made_by, mount_point const &at) {
    auto make = [this, made_by = std::shared_ptr<factory>(std::move(made_by))] {
        return (*made_by)(service_);
    };
    table_->add(at, std::make_shared<impl::application_cache>(std::move(make)), false);
}

void applications_pool::mount(booster::intrusive_ptr<application> app) {
    mount(std::move(app), mount_point());
}

void applications_pool::mount(booster::intrusive_ptr<application> app, mount_point const &at) {
    application &root = *app->root();
    root.asynchronous_ = true;
    if (!root.mounted_)
        root.mounted_ = std::make_shared<application *>(&root);
    // An application that nobody else refers to is left to us.
    bool const ours = root.references_ == 1;
    table_->add(at,
                std::make_shared<impl::single_application>(
                    root.mounted_, ours ? std::move(app) : booster::intrusive_ptr<application>()),
                true);
}

}  // namespace cppcms

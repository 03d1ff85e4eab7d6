#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/cppcms_error.h>
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
    table_->add(at, std::make_shared<impl::application_cache>(false, std::move(make)), false);
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

void applications_pool::mount(booster::shared_ptr<application_specific_pool> pool, int flags) {
    mount(std::move(pool), mount_point(), flags);
}

void applications_pool::mount(booster::shared_ptr<application_specific_pool> pool, mount_point const &at,
                              int flags) {
    if (flags & app::legacy)
        throw cppcms_error("The flag cppcms::app::legacy is not for applications to give");
    if (std::exchange(pool->mounted_, true))
        throw cppcms_error("Attempt to mount application_specific_pool twice");
    bool const asynchronous = (flags & app::op_mode_mask) == app::asynchronous;
    auto make = [this, pool = pool.get(), asynchronous] {
        std::unique_ptr<application> made(pool->new_application(service_));
        made->asynchronous_ = asynchronous;
        return made;
    };
    auto const source = std::make_shared<impl::application_cache>(asynchronous, make);
    if (flags & app::prepopulated)
        for (int i = asynchronous ? 1 : service_.threads_no(); i > 0; --i)
            source->give_back(booster::intrusive_ptr<application>(make().release()));
    table_->add(at, source, false, std::move(pool));
}

void applications_pool::unmount(booster::weak_ptr<application_specific_pool> pool) {
    if (auto const found = std::exchange(pool, {}).lock()) {
        table_->remove(found);
        found->mounted_ = false;
    }
}

}  // namespace cppcms

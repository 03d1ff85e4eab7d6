#include "mount_table.h"

namespace cppcms::impl {

booster::intrusive_ptr<application> application_cache::take() {
    {
        std::lock_guard const lock(guard_);
        if (!idle_.empty()) {
            auto app = std::move(idle_.back());
            idle_.pop_back();
            return app;
        }
    }
    return booster::intrusive_ptr<application>(make_().release());
}

void application_cache::give_back(booster::intrusive_ptr<application> const &app) {
    std::lock_guard const lock(guard_);
    idle_.push_back(app);
}

booster::intrusive_ptr<application> single_application::take() {
    auto const app = app_.lock();
    return app ? booster::intrusive_ptr<application>(*app) : booster::intrusive_ptr<application>();
}

void mount_table::add(mount_point const &at, std::shared_ptr<application_source> source, bool secondary) {
    std::lock_guard const lock(guard_);
    (secondary ? secondary_ : primary_).push_back({at, std::move(source)});
}

std::optional<mount_table::match> mount_table::find(std::string const &host, std::string const &script,
                                                    std::string const &path) const {
    std::shared_lock const lock(guard_);
    for (auto const *mounts : {&primary_, &secondary_})
        for (mount const &m : *mounts) {
            if (!m.source->is_alive())
                continue;
            if (auto [matches, url] = m.point.match(host, script, path); matches)
                return match{m.source, std::move(url)};
        }
    return std::nullopt;
}

}  // namespace cppcms::impl

#include <cppcms/views_pool.h>

#include <booster/locale.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/json.h>

#include "views_check.h"

#include <algorithm>
#include <mutex>

namespace cppcms {

application &base_content::app() {
    if (!app_)
        throw cppcms_error(
            "cppcms::base_content: an attempt to access content's application that wasn't assigned");
    return *app_;
}

base_content::app_guard::app_guard(base_content &content, application &app) {
    if (content.has_app())
        return;
    content.app(app);
    lent_to_ = &content;
}

base_content::app_guard::app_guard(base_content &content, base_content &from) {
    if (content.has_app() || !from.has_app())
        return;
    content.app(from.app());
    lent_to_ = &content;
}

base_content::app_guard::~app_guard() {
    if (lent_to_)
        lent_to_->reset_app();
}

translation_domain_scope::translation_domain_scope(std::ostream &out, int id) : out_(out) {
    if (id < 0)
        return;
    auto info = booster::locale::ios_info::get(out_);
    previous_id_ = info.domain_id();
    info.domain_id(id);
}

translation_domain_scope::translation_domain_scope(std::ostream &out, std::string const &domain)
    : translation_domain_scope(out, domain_id(out, domain)) {}

translation_domain_scope::~translation_domain_scope() {
    if (previous_id_ >= 0)
        booster::locale::ios_info::get(out_).domain_id(previous_id_);
}

int translation_domain_scope::domain_id(std::ostream &out, std::string const &domain) {
    return std::use_facet<booster::locale::message_format<char>>(out.getloc()).domain(domain);
}

namespace views {

namespace {

void need_skin(std::string const &skin) {
    if (skin.empty())
        throw cppcms_error("No default skin was detected, please define one in views.default_skin.");
}

}  // namespace

std::unique_ptr<base_view> generator::create(std::string const &name, std::ostream &out,
                                             base_content *content) const {
    auto const view = views_.find(name);
    return view == views_.end() ? nullptr : view->second.factory(out, content);
}

std::vector<std::string> generator::enumerate() const {
    std::vector<std::string> names;
    for (auto const &view : views_)
        names.push_back(view.first);
    return names;
}

void generator::invalid_content() {
    throw cppcms_error("cppcms::views::generator: an attempt to use content of invalid type");
}

pool &pool::instance() {
    static pool all;
    return all;
}

void pool::add(generator const &generator) {
    std::unique_lock const lock(guard_);
    skins_[generator.name()].push_back(&generator);
}

void pool::remove(generator const &generator) {
    std::unique_lock const lock(guard_);
    auto const skin = skins_.find(generator.name());
    if (skin == skins_.end())
        return;
    std::erase(skin->second, &generator);
    if (skin->second.empty())
        skins_.erase(skin);
}

generator::entry pool::find(std::string const &skin, std::string const &view) const {
    std::shared_lock const lock(guard_);
    auto const found = skins_.find(skin);
    if (found == skins_.end())
        throw cppcms_error("cppcms::views::pool: no such skin: " + skin);
    auto const &generators = found->second;
    for (auto generator = generators.rbegin(); generator != generators.rend(); ++generator)
        if (auto const entry = (*generator)->views_.find(view); entry != (*generator)->views_.end())
            return entry->second;
    throw cppcms_error("cppcms::view::pool: no such view: " + view + " is registered for skin: " + skin);
}

std::unique_ptr<base_view> pool::create(std::string const &skin, std::string const &view, std::ostream &out,
                                        base_content &content) const {
    return find(skin, view).factory(out, &content);
}

void pool::render(std::string const &skin, std::string const &view, std::ostream &out,
                  base_content &content) {
    create(skin, view, out, content)->render();
}

void pool::check(std::string const &skin, std::string const &view, base_content &content) {
    need_skin(skin);
    auto const entry = instance().find(skin, view);
    if (entry.accepts && !entry.accepts(content))
        generator::invalid_content();
}

std::vector<std::string> pool::enumerate() {
    std::shared_lock const lock(guard_);
    std::vector<std::string> names;
    for (auto const &skin : skins_)
        names.push_back(skin.first);
    return names;
}

manager::manager(json::value const &settings) : default_skin_(settings.get("views.default_skin", "")) {
    auto const skins = settings.get("views.skins", std::vector<std::string>());
    if (!skins.empty() && settings.get("views.paths", std::vector<std::string>()).empty())
        throw cppcms_error("The setting views.skins needs views.paths");
    if (!default_skin_.empty())
        return;
    auto const registered = pool::instance().enumerate();
    if (!skins.empty())
        default_skin_ = skins.front();
    else if (registered.size() == 1)
        default_skin_ = registered.front();
}

void manager::render(std::string const &skin, std::string const &view, std::ostream &out,
                     base_content &content) {
    need_skin(skin);
    pool::instance().render(skin, view, out, content);
}

}  // namespace views

void impl::check_view(std::string const &skin, std::string const &view, base_content &content) {
    views::pool::check(skin, view, content);
}

}  // namespace cppcms

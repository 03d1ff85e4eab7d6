#include <booster/log.h>
#include <cppcms/application.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <cppcms/url_mapper.h>

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string_view>

namespace cppcms {

namespace {

constexpr char invalid_url[] = "/this_is_an_invalid_url_generated_by_url_mapper";

void check_key(std::string const &key) {
    if (key.empty() || key == "." || key == ".." || key.find_first_of("/;,") != std::string::npos)
        throw cppcms_error(
            "cppcms::url_mapper: key may not be '' , '.' or '..' and must not include '/' in it");
}

bool is_number(std::string const &text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// "key;word1,word2" -> "key" and the words.
std::vector<std::string> take_words(std::string_view &key) {
    std::vector<std::string> words;
    auto const semicolon = key.find(';');
    if (semicolon == std::string_view::npos)
        return words;
    std::istringstream list(std::string(key.substr(semicolon + 1)));
    for (std::string word; std::getline(list, word, ',');)
        words.push_back(word);
    key = key.substr(0, semicolon);
    return words;
}

}  // namespace

url_mapper::url_mapper(application *app) : app_(app) {}

std::string url_mapper::root() {
    return root_;
}

void url_mapper::root(std::string const &prefix) {
    root_ = prefix;
    forget_known();
}

url_mapper::pattern url_mapper::parse(std::string const &url, unsigned &parameters) {
    pattern result;
    parameters = 0;
    std::size_t from = 0;
    for (;;) {
        auto const brace = url.find_first_of("{}", from);
        result.texts.push_back(url.substr(from, brace - from));
        if (brace == std::string::npos)
            return result;
        if (url[brace] == '}')
            throw cppcms_error("cppcms::url_mapper: '}' in url without '{'");
        auto const end = url.find('}', brace);
        if (end == std::string::npos)
            throw cppcms_error("cppcms::url_mapper: '{' in url without '}'");
        auto const name = url.substr(brace + 1, end - brace - 1);
        if (name.empty())
            throw cppcms_error("cppcms::url_mapper: empty index between {}");
        if (is_number(name)) {
            // No map call carries more than six parameters: a longer number can only be a mistake.
            auto const index = name.size() > 4 ? 0U : static_cast<unsigned>(std::stoul(name));
            if (index == 0)
                throw cppcms_error("cppcms::url_mapper: index " + name + " is invalid");
            parameters = std::max(parameters, index);
            result.places.push_back({index, {}});
        } else {
            result.places.push_back({0, name});
        }
        from = end + 1;
    }
}

void url_mapper::assign(std::string const &key, std::string const &url) {
    check_key(key);
    if (is_mounted(key))
        throw cppcms_error("cppcms::url_mapper: mounted application key `" + key +
                           "' can't be shared with ordinary url key");
    unsigned parameters = 0;
    auto parsed = parse(url, parameters);
    patterns_[key].insert_or_assign(parameters, std::move(parsed));
    forget_known();
}

void url_mapper::assign(std::string const &url) {
    unsigned parameters = 0;
    auto parsed = parse(url, parameters);
    patterns_[""].insert_or_assign(parameters, std::move(parsed));
    forget_known();
}

void url_mapper::mount(std::string const &name, std::string const &url, application &app) {
    check_key(name);
    if (patterns_.contains(name) && !is_mounted(name))
        throw cppcms_error("cppcms::url_mapper: mounted application key `" + name +
                           "' can't be shared with ordinary url key");
    unsigned parameters = 0;
    auto parsed = parse(url, parameters);
    if (parameters != 1)
        throw cppcms_error("cppcms::url_mapper the application mapping should use only 1 parameter");
    parsed.child = &app;
    auto const mounted = patterns_[name].insert_or_assign(1, std::move(parsed)).first;
    app.mapper().parent_ = this;
    app.mapper().mounted_as_ = name;
    app.mapper().mounted_at_ = &mounted->second;
    forget_known();
}

void url_mapper::set_value(std::string const &key, std::string const &value) {
    topmost().values_.insert_or_assign(key, value);
    forget_known();
}

void url_mapper::clear_value(std::string const &key) {
    topmost().values_.erase(key);
    forget_known();
}

bool url_mapper::is_mounted(std::string_view key) const {
    auto const found = patterns_.find(key);
    return found != patterns_.end() && found->second.begin()->second.child;
}

url_mapper &url_mapper::child(std::string const &name) {
    return child(name, name);
}

url_mapper &url_mapper::child(std::string_view name, std::string_view rest) {
    auto const &mounted = find(name, 1, rest);
    if (!mounted.child)
        throw cppcms_error(not_found(name, rest));
    return mounted.child->mapper();
}

url_mapper &url_mapper::parent() {
    if (!parent_)
        throw cppcms_error("url_mapper: no parent found");
    return *parent_;
}

url_mapper &url_mapper::topmost() {
    url_mapper *mapper = this;
    while (mapper->parent_)
        mapper = mapper->parent_;
    return *mapper;
}

std::string url_mapper::path() const {
    return parent_ ? parent_->path() + mounted_as_ + '/' : "/";
}

std::string url_mapper::not_found(std::string_view key, std::string_view rest) const {
    return "url_mapper: key `" + std::string(key) + "' not found for url `" + path() + std::string(rest) +
           "'";
}

url_mapper::pattern const &url_mapper::find(std::string_view key, std::size_t parameters,
                                            std::string_view rest) const {
    auto const by_count = patterns_.find(key);
    if (by_count == patterns_.end())
        throw cppcms_error(not_found(key, rest));
    auto const found = by_count->second.find(static_cast<unsigned>(parameters));
    if (found == by_count->second.end())
        throw cppcms_error("url_mapper: invalid number of parameters for " + std::string(key) + "in url `" +
                           path() + std::string(rest) + "'");
    return found->second;
}

std::string url_mapper::filled(pattern const &pattern, std::span<std::string const> parameters,
                               values_type const &values) {
    std::string url = pattern.texts.front();
    for (std::size_t i = 0; i < pattern.places.size(); ++i) {
        auto const &place = pattern.places[i];
        if (place.index > 0)
            url += parameters[place.index - 1];
        else if (auto const value = values.find(place.word); value != values.end())
            url += value->second;
        url += pattern.texts[i + 1];
    }
    return url;
}

std::string url_mapper::made(std::string_view rest, parameters_type parameters) {
    url_mapper *mapper = this;
    url_mapper &top = topmost();
    if (rest.starts_with('/')) {
        mapper = &top;
        rest.remove_prefix(1);
    }
    for (auto slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
        auto const step = rest.substr(0, slash);
        if (step == "..") {
            mapper = &mapper->parent();
        } else if (step != ".") {
            mapper = &mapper->child(step, rest);
        }
        rest.remove_prefix(slash + 1);
    }

    auto const words = take_words(rest);
    if (rest == "..")
        mapper = &mapper->parent();
    if (rest == "." || rest == "..")
        rest = {};
    if (mapper->is_mounted(rest)) {
        mapper = &mapper->child(rest, rest);
        rest = {};
    }

    values_type with_words;
    auto const bound = std::min(words.size(), parameters.size());
    if (bound > 0)
        with_words = top.values_;
    for (std::size_t i = 0; i < bound; ++i)
        with_words.insert_or_assign(words[i], parameters[i]);
    values_type const &values = bound > 0 ? with_words : top.values_;
    auto const left = std::span<std::string const>(parameters).subspan(bound);

    std::string url = filled(mapper->find(rest, left.size(), rest), left, values);
    for (; mapper->parent_; mapper = mapper->parent_)
        url = filled(*mapper->mounted_at_, {&url, 1}, values);
    return mapper->root_ + url;
}

std::string url_mapper::url(std::string const &key, parameters_type parameters) {
    try {
        if (!key.starts_with('/') || !parameters.empty())
            return made(key, std::move(parameters));
        auto &known = topmost().known_;
        if (auto const found = known.find(key); found != known.end())
            return found->second;
        std::string url = made(key, {});
        if (known.size() < most_known)
            known.emplace(key, url);
        return url;
    } catch (cppcms_error const &error) {
        if (app_ && app_->settings().get("misc.invalid_url_throws", false))
            throw;
        BOOSTER_ERROR("cppcms") << error.what() << '\n' << booster::trace(error);
        return invalid_url;
    }
}

void url_mapper::write(std::ostream &out, std::string const &key,
                       std::vector<filters::streamable const *> const &parameters) {
    parameters_type texts;
    for (auto const *parameter : parameters)
        texts.push_back(parameter->get(out));
    out << url(key, std::move(texts));
}

void url_mapper::map(std::ostream &out, std::string const &key) {
    write(out, key, {});
}

void url_mapper::map(std::ostream &out, std::string const &key, filters::streamable const &p1) {
    write(out, key, {&p1});
}

void url_mapper::map(std::ostream &out, std::string const &key, filters::streamable const &p1,
                     filters::streamable const &p2) {
    write(out, key, {&p1, &p2});
}

void url_mapper::map(std::ostream &out, std::string const &key, filters::streamable const &p1,
                     filters::streamable const &p2, filters::streamable const &p3) {
    write(out, key, {&p1, &p2, &p3});
}

void url_mapper::map(std::ostream &out, std::string const &key, filters::streamable const &p1,
                     filters::streamable const &p2, filters::streamable const &p3,
                     filters::streamable const &p4) {
    write(out, key, {&p1, &p2, &p3, &p4});
}

void url_mapper::map(std::ostream &out, std::string const &key, filters::streamable const &p1,
                     filters::streamable const &p2, filters::streamable const &p3,
                     filters::streamable const &p4, filters::streamable const &p5) {
    write(out, key, {&p1, &p2, &p3, &p4, &p5});
}

void url_mapper::map(std::ostream &out, std::string const &key, filters::streamable const &p1,
                     filters::streamable const &p2, filters::streamable const &p3,
                     filters::streamable const &p4, filters::streamable const &p5,
                     filters::streamable const &p6) {
    write(out, key, {&p1, &p2, &p3, &p4, &p5, &p6});
}

}  // namespace cppcms

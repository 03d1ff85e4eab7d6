#pragma once

#include <booster/noncopyable.h>
#include <cppcms/base_view.h>

#include <iosfwd>
#include <map>
#include <memory>
#include <shared_mutex>
#include <string>
#include <typeinfo>
#include <vector>

namespace cppcms {

namespace json {
class value;
}

namespace impl {
void check_view(std::string const &skin, std::string const &view, base_content &content);
}

namespace views {

/// A set of views under the name of their skin.
class generator : public booster::noncopyable {
  public:
    typedef std::unique_ptr<base_view> view_factory_type(std::ostream &out, base_content *content);

    /// Name of the skin.
    std::string name() const { return name_; }
    void name(std::string const &skin) { name_ = skin; }

    /// Adds a view with a constructor View(std::ostream &, Content &), replacing one of the same name.
    /// With \a safe, making it for content of another type throws cppcms_error.
    template <typename View, typename Content>
    void add_view(std::string const &name, bool safe = true) {
        if (safe)
            views_[name] = {&make_safely<View, Content>, &is_a<Content>};
        else
            views_[name] = {&make<View, Content>, nullptr};
    }
    void add_factory(std::string const &name, view_factory_type *factory) {
        views_[name] = {factory, nullptr};
    }

    /// A new view, or a null pointer where there is none of this name.
    std::unique_ptr<base_view> create(std::string const &name, std::ostream &out,
                                      base_content *content) const;
    std::vector<std::string> enumerate() const;

  private:
    friend class pool;

    struct entry {
        view_factory_type *factory = nullptr;
        bool (*accepts)(base_content &content) = nullptr;  // null: anything
    };

    template <typename Content>
    static bool is_a(base_content &content) {
        return dynamic_cast<Content *>(&content) != nullptr;
    }
    template <typename View, typename Content>
    static std::unique_ptr<base_view> make(std::ostream &out, base_content *content) {
        return std::make_unique<View>(out, static_cast<Content &>(*content));
    }
    template <typename View, typename Content>
    static std::unique_ptr<base_view> make_safely(std::ostream &out, base_content *content) {
        try {
            return std::make_unique<View>(out, dynamic_cast<Content &>(*content));
        } catch (std::bad_cast const &) {
            invalid_content();
        }
    }
    [[noreturn]] static void invalid_content();

    std::string name_;
    std::map<std::string, entry> views_;
};

/// All skins of the process.
class pool : public booster::noncopyable {
  public:
    static pool &instance();

    /// Registers a generator, which must outlive its registration. Generators of one skin merge; for equal
    /// view names the later registration counts.
    void add(generator const &generator);
    void remove(generator const &generator);

    /// Throws cppcms_error for an unknown skin or view, and for content of the wrong type.
    void render(std::string const &skin, std::string const &view, std::ostream &out, base_content &content);
    /// Names of the skins.
    std::vector<std::string> enumerate();

  private:
    friend void impl::check_view(std::string const &skin, std::string const &view, base_content &content);

    pool() = default;
    generator::entry find(std::string const &skin, std::string const &view) const;
    std::unique_ptr<base_view> create(std::string const &skin, std::string const &view, std::ostream &out,
                                      base_content &content) const;
    static void check(std::string const &skin, std::string const &view, base_content &content);

    mutable std::shared_mutex guard_;
    std::map<std::string, std::vector<generator const *>> skins_;
};

/// Views as the service uses them: the pool, and the default skin of its settings.
class manager : public booster::noncopyable {
  public:
    manager(json::value const &settings);

    void render(std::string const &skin, std::string const &view, std::ostream &out, base_content &content);
    /// The setting "views.default_skin", else the first of "views.skins", else the only registered skin;
    /// empty where there are none or several.
    std::string default_skin() { return default_skin_; }

  private:
    std::string default_skin_;
};

}  // namespace views

}  // namespace cppcms

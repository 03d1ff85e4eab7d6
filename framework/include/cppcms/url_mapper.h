#pragma once

#include <booster/noncopyable.h>
#include <cppcms/filters.h>

#include <functional>
#include <map>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cppcms {

class application;

/// Makes URLs from names: the reverse of the dispatcher. Each application has one; mounted children form
/// a tree in which a key is a path such as "/settings/about" (from the topmost mapper), "about" or
/// "../network/ntp" (from here).
///
/// A tree is used by one thread at a time.
///
/// A mapping that fails is logged and gives "/this_is_an_invalid_url_generated_by_url_mapper", unless the
/// setting "misc.invalid_url_throws" is true: then cppcms_error is thrown. Mistakes while the map is built
/// always throw.
class url_mapper : public booster::noncopyable {
  public:
    explicit url_mapper(application *app);

    /// What every URL begins with; only the topmost mapper's counts.
    std::string root();
    void root(std::string const &prefix);

    /// \a url with places {1}, {2}… for parameters and {word} for values set by set_value(). A key may be
    /// assigned once for each number of parameters.
    void assign(std::string const &key, std::string const &url);
    /// The default key.
    void assign(std::string const &url);
    /// URLs of \a app are put into \a url at its {1}.
    void mount(std::string const &name, std::string const &url, application &app);

    void set_value(std::string const &key, std::string const &value);
    void clear_value(std::string const &key);

    url_mapper &child(std::string const &name);
    url_mapper &parent();
    url_mapper &topmost();

    /// Internal: the URL that map() writes.
    std::string url(std::string const &key, std::vector<std::string> parameters);

    // Parameters are written as they are: nothing is encoded or escaped.
    void map(std::ostream &out, std::string const &key);
    void map(std::ostream &out, std::string const &key, filters::streamable const &p1);
    void map(std::ostream &out, std::string const &key, filters::streamable const &p1,
             filters::streamable const &p2);
    void map(std::ostream &out, std::string const &key, filters::streamable const &p1,
             filters::streamable const &p2, filters::streamable const &p3);
    void map(std::ostream &out, std::string const &key, filters::streamable const &p1,
             filters::streamable const &p2, filters::streamable const &p3, filters::streamable const &p4);
    void map(std::ostream &out, std::string const &key, filters::streamable const &p1,
             filters::streamable const &p2, filters::streamable const &p3, filters::streamable const &p4,
             filters::streamable const &p5);
    void map(std::ostream &out, std::string const &key, filters::streamable const &p1,
             filters::streamable const &p2, filters::streamable const &p3, filters::streamable const &p4,
             filters::streamable const &p5, filters::streamable const &p6);

  private:
    /// A place of a pattern that a parameter (index, from 1) or a named value (index 0) fills.
    struct place {
        unsigned index;
        std::string word;
    };
    /// texts[0] places[0] texts[1] … texts[n]
    struct pattern {
        std::vector<std::string> texts;
        std::vector<place> places;
        application *child = nullptr;
    };
    using values_type = std::map<std::string, std::string>;
    using parameters_type = std::vector<std::string>;

    static constexpr std::size_t most_known = 64;

    void forget_known() { topmost().known_.clear(); }
    static pattern parse(std::string const &url, unsigned &parameters);
    /// The pattern of \a key; \a rest is what the error message shows behind this mapper's own path.
    pattern const &find(std::string_view key, std::size_t parameters, std::string_view rest) const;
    std::string not_found(std::string_view key, std::string_view rest) const;
    url_mapper &child(std::string_view name, std::string_view rest);
    bool is_mounted(std::string_view key) const;
    std::string path() const;
    std::string made(std::string_view key, parameters_type parameters);
    static std::string filled(pattern const &pattern, std::span<std::string const> parameters,
                              values_type const &values);
    void write(std::ostream &out, std::string const &key,
               std::vector<filters::streamable const *> const &parameters);

    application *app_;
    url_mapper *parent_ = nullptr;
    std::string mounted_as_;
    pattern const *mounted_at_ = nullptr;  // of the parent, which keeps it where it is
    std::string root_;
    values_type values_;  // of the topmost mapper only
    values_type known_;   // likewise: URLs without parameters that were made, by their absolute keys
    std::map<std::string, std::map<unsigned, pattern>, std::less<>> patterns_;
};

}  // namespace cppcms

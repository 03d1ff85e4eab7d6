#pragma once

#include <booster/backtrace.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace booster {

/// An expression does not compile, or an empty regex object was matched.
class regex_error : public booster::runtime_error {
  public:
    explicit regex_error(std::string const &what) : booster::runtime_error(what) {}
};

/// A compiled Perl-compatible regular expression over bytes. Copies share the compiled code, which is
/// immutable: one regex may be matched by several threads at once.
class regex {
  public:
    static constexpr std::uint32_t perl = 0;
    static constexpr std::uint32_t normal = 0;
    static constexpr std::uint32_t icase = 0x100;
    static constexpr std::uint32_t utf8 = 0x200;

    /// Offsets of the whole match and of each group in the text; {-1,-1} for a group that took no part.
    using marks_type = std::vector<std::pair<int, int>>;

    explicit regex() = default;
    /// Throws regex_error where \a pattern is not a valid expression.
    regex(std::string const &pattern, int flags = normal) { assign(pattern, flags); }

    void assign(std::string const &pattern, int flags = normal);

    /// Whether the WHOLE text matches.
    bool match(char const *begin, char const *end, int flags = 0) const;
    bool match(char const *begin, char const *end, marks_type &marks, int flags = 0) const;
    /// Whether the expression matches somewhere in the text.
    bool search(char const *begin, char const *end, int flags = 0) const;
    bool search(char const *begin, char const *end, marks_type &marks, int flags = 0) const;

    /// Number of groups, 0 for an empty regex.
    unsigned mark_count() const;
    std::string str() const;
    int flags() const;
    bool empty() const;

  private:
    struct code;
    bool run(bool whole, char const *begin, char const *end, marks_type *marks) const;

    std::shared_ptr<code const> code_;
};

}  // namespace booster

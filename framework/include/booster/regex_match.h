#pragma once

#include <booster/perl_regex.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace booster {

/// One group of a match: a range of the matched text, which must outlive it.
template <typename Iterator>
class sub_match : public std::pair<Iterator, Iterator> {
  public:
    bool matched = false;

    std::size_t length() const {
        return matched ? static_cast<std::size_t>(std::distance(this->first, this->second)) : 0;
    }
    std::string str() const { return matched ? std::string(this->first, this->second) : std::string(); }
    operator std::string() const { return str(); }
};

/// The groups of a match; [0] is the whole of it.
template <typename Iterator>
class match_results {
  public:
    using value_type = sub_match<Iterator>;

    /// Number of groups plus one; 0 before a match.
    std::size_t size() const { return marks_.size(); }
    bool empty() const { return marks_.empty(); }

    /// Group \a n; one that took no part in the match, or beyond the last, is unmatched.
    value_type operator[](int n) const {
        value_type group;
        group.first = group.second = end_;
        if (n < 0 || static_cast<std::size_t>(n) >= marks_.size() ||
            marks_[static_cast<std::size_t>(n)].first < 0)
            return group;
        auto const [from, to] = marks_[static_cast<std::size_t>(n)];
        group.first = std::next(begin_, from);
        group.second = std::next(begin_, to);
        group.matched = true;
        return group;
    }

    /// Filled by regex_match() and regex_search().
    void assign(Iterator begin, Iterator end, regex::marks_type marks) {
        begin_ = begin;
        end_ = end;
        marks_ = std::move(marks);
    }

  private:
    Iterator begin_{};
    Iterator end_{};
    regex::marks_type marks_;
};

using ssub_match = sub_match<std::string::const_iterator>;
using csub_match = sub_match<char const *>;
using smatch = match_results<std::string::const_iterator>;
using cmatch = match_results<char const *>;

namespace details {

template <typename Iterator>
bool run(bool whole, Iterator begin, Iterator end, match_results<Iterator> &result, regex const &expression) {
    char const *const text = begin == end ? "" : &*begin;
    char const *const text_end = text + std::distance(begin, end);
    regex::marks_type marks;
    bool const found =
        whole ? expression.match(text, text_end, marks) : expression.search(text, text_end, marks);
    if (!found)
        marks.clear();
    result.assign(begin, end, std::move(marks));
    return found;
}

inline char const *end_of(char const *text) {
    return text + std::char_traits<char>::length(text);
}

}  // namespace details

// regex_match: whether the WHOLE text matches. regex_search: whether there is a match somewhere in it.

inline bool regex_match(std::string const &text, smatch &result, regex const &expression, int = 0) {
    return details::run(true, text.begin(), text.end(), result, expression);
}

inline bool regex_match(char const *text, cmatch &result, regex const &expression, int = 0) {
    return details::run(true, text, details::end_of(text), result, expression);
}

inline bool regex_match(char const *begin, char const *end, cmatch &result, regex const &expression,
                        int = 0) {
    return details::run(true, begin, end, result, expression);
}

inline bool regex_match(std::string const &text, regex const &expression, int = 0) {
    return expression.match(text.data(), text.data() + text.size());
}

inline bool regex_match(char const *text, regex const &expression, int = 0) {
    return expression.match(text, details::end_of(text));
}

inline bool regex_match(char const *begin, char const *end, regex const &expression, int = 0) {
    return expression.match(begin, end);
}

inline bool regex_search(std::string const &text, smatch &result, regex const &expression, int = 0) {
    return details::run(false, text.begin(), text.end(), result, expression);
}

inline bool regex_search(char const *text, cmatch &result, regex const &expression, int = 0) {
    return details::run(false, text, details::end_of(text), result, expression);
}

inline bool regex_search(char const *begin, char const *end, cmatch &result, regex const &expression,
                         int = 0) {
    return details::run(false, begin, end, result, expression);
}

inline bool regex_search(std::string const &text, regex const &expression, int = 0) {
    return expression.search(text.data(), text.data() + text.size());
}

inline bool regex_search(char const *text, regex const &expression, int = 0) {
    return expression.search(text, details::end_of(text));
}

inline bool regex_search(char const *begin, char const *end, regex const &expression, int = 0) {
    return expression.search(begin, end);
}

// The results refer to the text: a temporary would be gone before they are read.
bool regex_match(std::string &&, smatch &, regex const &, int = 0) = delete;
bool regex_search(std::string &&, smatch &, regex const &, int = 0) = delete;

}  // namespace booster

#define PCRE2_CODE_UNIT_WIDTH 8
#include <booster/regex.h>
#include <pcre2.h>

#include <type_traits>

namespace booster {

namespace {

template <auto Free>
struct deleter {
    template <typename T>
    void operator()(T *pointer) const {
        Free(pointer);
    }
};

using code_ptr = std::unique_ptr<pcre2_code, deleter<pcre2_code_free>>;
using match_data_ptr = std::unique_ptr<pcre2_match_data, deleter<pcre2_match_data_free>>;
using match_context_ptr = std::unique_ptr<pcre2_match_context, deleter<pcre2_match_context_free>>;

/// A hostile text cannot hold a worker for longer than this many backtracking steps.
constexpr std::uint32_t match_limit = 1'000'000;

code_ptr compile(std::string const &pattern, std::uint32_t options) {
    int error = 0;
    PCRE2_SIZE offset = 0;
    code_ptr code(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(), options, &error,
                                &offset, nullptr));
    if (!code) {
        PCRE2_UCHAR text[256];
        pcre2_get_error_message(error, text, sizeof(text));
        throw regex_error("booster::regex:" + std::string(reinterpret_cast<char *>(text)) + ", at offset " +
                          std::to_string(offset));
    }
    return code;
}

match_context_ptr limited_context() {
    match_context_ptr context(pcre2_match_context_create(nullptr));
    pcre2_set_match_limit(context.get(), match_limit);
    return context;
}

}  // namespace

struct regex::code {
    std::string pattern;
    int flags;
    code_ptr search;
    /// The pattern wrapped so that only a match of the whole text counts, alternatives included.
    code_ptr match;
};

void regex::assign(std::string const &pattern, int flags) {
    std::uint32_t options = PCRE2_NEVER_BACKSLASH_C;
    if (flags & icase)
        options |= PCRE2_CASELESS;
    if (flags & utf8)
        options |= PCRE2_UTF;
    auto search = compile(pattern, options);  // first, for error offsets in the caller's own text
    auto match = compile("(?:" + pattern + ")\\z", options | PCRE2_ANCHORED);
    code_ = std::make_shared<code const>(code{pattern, flags, std::move(search), std::move(match)});
}

bool regex::run(bool whole, char const *begin, char const *end, marks_type *marks) const {
    if (!code_)
        throw regex_error("booster::regex: Empty expression");
    auto const *compiled = (whole ? code_->match : code_->search).get();
    static thread_local match_context_ptr const context = limited_context();
    match_data_ptr data(pcre2_match_data_create_from_pattern(compiled, nullptr));
    int const groups = pcre2_match(compiled, reinterpret_cast<PCRE2_SPTR>(begin),
                                   static_cast<PCRE2_SIZE>(end - begin), 0, 0, data.get(), context.get());
    if (groups < 0)
        return false;
    if (marks) {
        PCRE2_SIZE const *offsets = pcre2_get_ovector_pointer(data.get());
        marks->assign(mark_count() + 1, {-1, -1});
        for (std::size_t i = 0; i < static_cast<std::size_t>(groups); ++i) {
            if (offsets[2 * i] != PCRE2_UNSET)
                (*marks)[i] = {static_cast<int>(offsets[2 * i]), static_cast<int>(offsets[2 * i + 1])};
        }
    }
    return true;
}

bool regex::match(char const *begin, char const *end, int) const {
    return run(true, begin, end, nullptr);
}

bool regex::match(char const *begin, char const *end, marks_type &marks, int) const {
    return run(true, begin, end, &marks);
}

bool regex::search(char const *begin, char const *end, int) const {
    return run(false, begin, end, nullptr);
}

bool regex::search(char const *begin, char const *end, marks_type &marks, int) const {
    return run(false, begin, end, &marks);
}

unsigned regex::mark_count() const {
    std::uint32_t groups = 0;
    if (code_)
        pcre2_pattern_info(code_->search.get(), PCRE2_INFO_CAPTURECOUNT, &groups);
    return groups;
}

std::string regex::str() const {
    return code_ ? code_->pattern : std::string();
}

int regex::flags() const {
    return code_ ? code_->flags : normal;
}

bool regex::empty() const {
    return !code_;
}

}  // namespace booster

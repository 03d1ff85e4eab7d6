#include "plural_rule.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace booster::locale::impl {

namespace {

using number = unsigned long;

constexpr int max_depth = 50;
constexpr std::size_t max_length = 1000;

struct binary_operator {
    std::string_view sign;
    int level;  // a higher one binds closer
    number (*apply)(number left, number right);
};

/// A sign comes before those that it begins with. Division by zero, which is undefined in C, gives 0.
constexpr std::array operators{
    binary_operator{"||", 1, [](number a, number b) -> number { return a || b; }},
    binary_operator{"&&", 2, [](number a, number b) -> number { return a && b; }},
    binary_operator{"==", 3, [](number a, number b) -> number { return a == b; }},
    binary_operator{"!=", 3, [](number a, number b) -> number { return a != b; }},
    binary_operator{"<=", 4, [](number a, number b) -> number { return a <= b; }},
    binary_operator{">=", 4, [](number a, number b) -> number { return a >= b; }},
    binary_operator{"<", 4, [](number a, number b) -> number { return a < b; }},
    binary_operator{">", 4, [](number a, number b) -> number { return a > b; }},
    binary_operator{"+", 5, [](number a, number b) -> number { return a + b; }},
    binary_operator{"-", 5, [](number a, number b) -> number { return a - b; }},
    binary_operator{"*", 6, [](number a, number b) -> number { return a * b; }},
    binary_operator{"/", 6, [](number a, number b) -> number { return b ? a / b : 0; }},
    binary_operator{"%", 6, [](number a, number b) -> number { return b ? a % b : 0; }},
};

/// Reads and computes at once. Nothing in an expression has an effect, so all its parts may be computed.
class computation {
  public:
    computation(std::string_view rest, number n) : rest_(rest), n_(n) {}

    number whole() {
        auto const result = choice();
        if (skip_blanks(); !rest_.empty())
            fail();
        return result;
    }

    [[noreturn]] static void fail() {
        throw std::runtime_error("its plural rule is no expression of n, or too long");
    }

  private:
    void skip_blanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t"), rest_.size())); }

    bool take(std::string_view sign) {
        skip_blanks();
        if (!rest_.starts_with(sign))
            return false;
        rest_.remove_prefix(sign.size());
        return true;
    }

    number choice() {
        auto const condition = binary(1);
        if (!take("?"))
            return condition;
        auto const if_true = deeper(&computation::choice);
        if (!take(":"))
            fail();
        auto const if_false = deeper(&computation::choice);
        return condition ? if_true : if_false;
    }

    /// Operators of \a level and of those that bind closer.
    number binary(int level) {
        auto left = unary();
        while (auto const *const found = next(level))
            left = found->apply(left, binary(found->level + 1));
        return left;
    }

    binary_operator const *next(int level) {
        for (auto const &one : operators)
            if (one.level >= level && take(one.sign))
                return &one;
        return nullptr;
    }

    number unary() {
        if (take("!"))
            return !deeper(&computation::unary);
        if (take("n"))
            return n_;
        if (take("(")) {
            auto const inside = deeper(&computation::choice);
            if (!take(")"))
                fail();
            return inside;
        }
        return literal();
    }

    number literal() {
        auto const length = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        if (length == 0 || length > 9)
            fail();
        auto const value = std::stoul(std::string(rest_.substr(0, length)));
        rest_.remove_prefix(length);
        return value;
    }

    number deeper(number (computation::*part)()) {
        if (++depth_ > max_depth)
            fail();
        auto const result = (this->*part)();
        --depth_;
        return result;
    }

    std::string_view rest_;
    number n_;
    int depth_ = 0;
};

}  // namespace

plural_rule::plural_rule(std::string const &expression) : expression_(expression) {
    if (expression.size() > max_length)
        computation::fail();
    (*this)(0);
}

unsigned long plural_rule::operator()(unsigned long n) const {
    return computation(expression_, n).whole();
}

}  // namespace booster::locale::impl

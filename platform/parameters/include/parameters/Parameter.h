#pragma once

#include <string>
#include <string_view>

/// What the parameter store holds, whoever has made the store.
namespace prm {

/// Type codes as in PRM_PAR_T.
enum class Type : int { Integer = 0, Float = 1, String = 2, File = 4 };

/// A typed value. The text form is the one that is stored.
struct Value {
    std::string text;
    Type type = Type::String;
    unsigned mode = 0;  ///< permission bits of a file parameter
};

struct Parameter {
    std::string key;
    Value value;
};

constexpr std::size_t maxKeyLength = 1023;
/// The one spelling of a key; empty where \a key is not acceptable as one.
std::string_view NormalKey(std::string_view key);

/// Text forms of numbers: the shortest that reads back as the same number.
std::string FormatNumber(int number);
std::string FormatNumber(float number);
/// Reads a number that is the whole of \a text; false, with \a number unchanged, where it is none.
bool ParseNumber(std::string_view text, int &number);
bool ParseNumber(std::string_view text, float &number);

/// Gives the text of a number the form in which it is stored, so that 007 becomes 7. False where \a value's
/// text is none of its type.
bool MakeCanonical(Value &value);

}  // namespace prm

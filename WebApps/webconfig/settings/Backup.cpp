#include "WebApps/webconfig/settings/Backup.h"

#include <algorithm>
#include <map>
#include <optional>
#include <sstream>
#include <utility>

namespace webconfig::settings {

namespace {

using prm::Parameter;
using prm::ParameterFileError;

/// A device has some hundred. Each is looked up, compared and may be a row of a page.
constexpr std::size_t mostParameters = 10000;

/// Between key and value, and what ends a value before the letter of its type.
constexpr std::string_view separator = R"(",")";
constexpr std::string_view valueEnd = R"(", )";

/// The key of a parameter that \a line begins; nothing where it cannot begin one.
std::optional<std::string_view> KeyIn(std::string_view line) {
    std::size_t const end = line.find('"', 1);
    if (!line.starts_with('"') || line.substr(std::min(end, line.size())).substr(0, 3) != separator)
        return {};
    std::string_view const key = line.substr(1, end - 1);
    return prm::NormalKey(key) == key && !key.empty() ? std::optional(key) : std::nullopt;
}

/// The type that \a text, up to the end of a line, ends a value with; nothing where it does not.
std::optional<prm::Type> TypeAtEnd(std::string_view text) {
    if (text.size() <= valueEnd.size() || !text.substr(0, text.size() - 1).ends_with(valueEnd))
        return {};
    switch (text.back()) {
        case 'i':
            return prm::Type::Integer;
        case 'f':
            return prm::Type::Float;
        case 's':
            return prm::Type::String;
        default:
            return {};
    }
}

/// Reads a backup of the pages line by line.
class PageReader {
  public:
    explicit PageReader(std::string_view text) : text_(text) {}

    std::vector<Parameter> Read() {
        for (std::size_t begin = 0; begin < text_.size(); begin = end_ + 1) {
            end_ = std::min(text_.find('\n', begin), text_.size());
            ++line_;
            TakeLine(text_.substr(begin, end_ - begin), begin);
        }
        Close();
        return std::move(parameters_);
    }

  private:
    void TakeLine(std::string_view line, std::size_t begin) {
        auto const key = KeyIn(line);
        bool const isBetween = parameters_.empty() || type_;
        if (key && isBetween) {
            Close();
            Open(*key, begin);
        } else if (parameters_.empty()) {
            throw ParameterFileError(line_, "no parameter begins here");
        } else if (key || (isBetween && line.starts_with('"'))) {
            throw ParameterFileError(line_, "it may begin a parameter, or go on with the value before it");
        }
        type_ = TypeAtEnd(text_.substr(valueBegin_, end_ - valueBegin_));
        valueEnd_ = end_;
    }

    void Open(std::string_view key, std::size_t begin) {
        if (!parameters_.empty() && parameters_.back().key >= key)
            throw ParameterFileError(
                line_, "its key does not come behind the one before it, so it may be a part of that value");
        if (parameters_.size() == mostParameters)
            throw ParameterFileError(line_, "these are too many parameters");
        parameters_.push_back({std::string(key), {}});
        valueBegin_ = begin + 1 + key.size() + separator.size();
        firstLine_ = line_;
    }

    /// Ends the open parameter, if there is one, with the line before.
    void Close() {
        if (parameters_.empty())
            return;
        if (!type_)
            throw ParameterFileError(firstLine_, "its value has no end");
        prm::Value &value = parameters_.back().value;
        std::size_t const size = valueEnd_ - valueBegin_ - valueEnd.size() - 1;
        value = {std::string(text_.substr(valueBegin_, size)), *type_};
        if (!prm::MakeCanonical(value))
            throw ParameterFileError(firstLine_, "its value is no number of its type");
    }

    std::string_view const text_;
    std::vector<Parameter> parameters_;  // the last one may be open: its value is still to come
    int line_ = 0;                       // the number of the current line,
    std::size_t end_ = 0;                // and its end
    int firstLine_ = 0;                  // that of the open parameter
    std::size_t valueBegin_ = 0;
    std::size_t valueEnd_ = 0;       // the end of the last line that was taken
    std::optional<prm::Type> type_;  // which that line would end the parameter with
};

/// Of a key that is there twice the last value counts, as for `prm import`.
std::vector<Parameter> ReadExport(std::string const &text) {
    std::istringstream in(text);
    std::map<std::string, prm::Value> values;
    for (auto &parameter : prm::ReadParameters(in, mostParameters))
        values[std::string(prm::NormalKey(parameter.key))] = std::move(parameter.value);
    std::vector<Parameter> parameters;
    parameters.reserve(values.size());
    for (auto &[key, value] : values)
        parameters.push_back({key, std::move(value)});
    return parameters;
}

bool IsSame(Parameter const &left, Parameter const &right) {
    return left.key == right.key && left.value.text == right.value.text &&
           left.value.type == right.value.type;
}

}  // namespace

std::vector<Parameter> ReadPageBackup(std::string_view text) {
    return PageReader(text).Read();
}

std::vector<BackupReading> ReadBackup(std::string const &text) {
    std::vector<BackupReading> readings;
    std::optional<ParameterFileError> problem;  // of the format that most of the file can be read as
    for (auto const format : {BackupFormat::Page, BackupFormat::Export}) {
        try {
            auto parameters = format == BackupFormat::Page ? ReadPageBackup(text) : ReadExport(text);
            if (readings.empty() || !std::ranges::equal(readings[0].parameters, parameters, IsSame))
                readings.push_back({format, std::move(parameters)});
        } catch (ParameterFileError const &error) {
            if (!problem || error.Line() > problem->Line())
                problem = error;
        }
    }
    if (readings.empty())
        throw ParameterFileError(*problem);
    if (readings[0].parameters.empty())
        throw ParameterFileError(1, "there are no parameters in it");
    return readings;
}

}  // namespace webconfig::settings

// A backup of the pages: what is read is all that the file has, so that it is written as the same file.
#include <algorithm>
#include <cassert>

#include "WebApps/webconfig/settings/Backup.h"

using namespace webconfig::settings;

namespace {

std::string Written(std::vector<prm::Parameter> const &parameters) {
    std::string text;
    for (auto const &[key, value] : parameters) {
        char const type = value.type == prm::Type::Integer ? 'i' : value.type == prm::Type::Float ? 'f' : 's';
        text += '"' + key + "\",\"" + value.text + "\", " + type + '\n';
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string const text(reinterpret_cast<char const *>(data), size);
    try {
        auto const readings = ReadBackup(text);
        assert(readings.size() == 1 || readings.size() == 2);
        auto const parameters = ReadPageBackup(text);
        std::string const written = Written(parameters);
        // Where it has no numbers, which may be written otherwise than in the form of the store.
        bool const numbers = std::any_of(parameters.begin(), parameters.end(), [](auto const &read) {
            return read.value.type != prm::Type::String;
        });
        assert(numbers ? Written(ReadPageBackup(written)) == written
                       : written == text || written == text + '\n');
    } catch (prm::ParameterFileError const &error) {
        assert(std::string_view(error.what()).starts_with("line "));
    }
    return 0;
}

// A file of parameters, as `prm import` takes it: what is read can be
// written, and is read as the same parameters.
#include <cassert>
#include <sstream>

#include "parameters/ParameterFile.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::istringstream in(std::string(reinterpret_cast<char const *>(data), size));
    std::vector<prm::Parameter> parameters;
    try {
        parameters = prm::ReadParameters(in);
    } catch (prm::ParameterFileError const &error) {
        assert(std::string_view(error.what()).starts_with("line "));
        return 0;
    }
    for (auto const &parameter : parameters) {
        std::string const line = prm::FormatLine(parameter);
        assert(line.find('\n') == std::string::npos);
        std::istringstream file(line);
        auto const again = prm::ReadParameters(file);
        assert(again.size() == 1 && again[0].key == parameter.key);
        assert(again[0].value.text == parameter.value.text && again[0].value.type == parameter.value.type);
        assert(prm::FormatLine(again[0]) == line);
    }
    return 0;
}

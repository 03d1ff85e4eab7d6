#include <booster/regex_match.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/service.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace cppcms {

namespace {

json::value parse_file(std::string const &name) {
    std::ifstream in(name);
    if (!in)
        throw cppcms_error("Failed to open filename:" + name);
    json::value settings;
    int line = 0;
    if (!settings.load(in, true, &line))
        throw cppcms_error("Error reading configuration file " + name + " in line:" + std::to_string(line));
    return settings;
}

json::value parse_value(std::string const &text) {
    static booster::regex const number("-?\\d+(\\.\\d+)?([eE][+-]?\\d+)?");
    if (text == "true" || text == "false")
        return text == "true";
    if (text == "null")
        return json::null();
    if (booster::regex_match(text, number))
        return std::strtod(text.c_str(), nullptr);
    if (!text.starts_with('[') && !text.starts_with('{'))
        return text;
    json::value parsed;
    char const *begin = text.data();
    if (!parsed.load(begin, text.data() + text.size(), true))
        throw cppcms_error("Invadid json expresson: " + text);
    return parsed;
}

void apply_switch(json::value &settings, std::string const &argument) {
    static booster::regex const shape("--((\\w+)(-\\w+)*)=((.|\\n|\\r)*)");
    booster::smatch parts;
    if (!booster::regex_match(argument, parts, shape))
        throw cppcms_error("Invalid switch: " + argument);
    std::string path = parts[1];
    std::replace(path.begin(), path.end(), '-', '.');
    settings.set(path, parse_value(parts[4]));
}

/// Name of the configuration file, "" where none is given.
std::string file_name(int argc, char *argv[]) {
    std::string name;
    for (int i = 1; i < argc && std::string_view(argv[i]) != "-U"; ++i) {
        if (std::string_view(argv[i]) != "-c")
            continue;
        if (!name.empty())
            throw cppcms_error("Switch -c can't be used twice");
        if (++i >= argc)
            throw cppcms_error("Switch -c requires configuration file parameters");
        name = argv[i];
    }
    if (char const *const variable = std::getenv("CPPCMS_CONFIG"); name.empty() && variable)
        name = variable;
    return name;
}

}  // namespace

json::value service::load_settings(int argc, char *argv[]) {
    std::string const file = file_name(argc, argv);
    json::value settings = file.empty() ? json::value() : parse_file(file);
    bool switched = false;
    for (int i = 1; i < argc && std::string_view(argv[i]) != "-U"; ++i) {
        if (std::string_view(argv[i]) == "-c")
            ++i;  // its file name may look like a switch
        else if (std::string_view(argv[i]).starts_with("--")) {
            apply_switch(settings, argv[i]);
            switched = true;
        }
    }
    if (file.empty() && !switched)
        throw cppcms_error("No configuration defined");
    return settings;
}

}  // namespace cppcms

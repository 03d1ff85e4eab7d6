#include <booster/regex_match.h>
#include <cppcms/mount_point.h>

namespace cppcms {

namespace {

bool matches(booster::regex const &expression, std::string const &text) {
    return expression.empty() || booster::regex_match(text, expression);
}

}  // namespace

mount_point::mount_point(std::string const &script) : script_(script) {}

mount_point::mount_point(std::string const &path, int group) : path_(path), group_(group) {}

mount_point::mount_point(std::string const &script, std::string const &path, int group)
    : script_(script), path_(path), group_(group) {}

mount_point::mount_point(selection_type selection, std::string const &non_selected) : selection_(selection) {
    (selection == match_path_info ? script_ : path_) = booster::regex(non_selected);
}

mount_point::mount_point(selection_type selection, std::string const &selected, int group)
    : group_(group), selection_(selection) {
    (selection == match_path_info ? path_ : script_) = booster::regex(selected);
}

mount_point::mount_point(selection_type selection, std::string const &non_selected,
                         std::string const &selected, int group)
    : mount_point(selection, selected, group) {
    (selection == match_path_info ? script_ : path_) = booster::regex(non_selected);
}

mount_point::mount_point(selection_type selection, booster::regex const &host, booster::regex const &script,
                         booster::regex const &path, int group)
    : host_(host), script_(script), path_(path), group_(group), selection_(selection) {}

std::pair<bool, std::string> mount_point::match(std::string const &host, std::string const &script,
                                                std::string const &path) const {
    bool const by_path = selection_ == match_path_info;
    std::string const &selected = by_path ? path : script;
    booster::regex const &expression = by_path ? path_ : script_;
    if (!matches(host_, host) || !matches(by_path ? script_ : path_, by_path ? script : path))
        return {false, {}};
    if (expression.empty())
        return {true, selected};
    booster::smatch groups;
    if (!booster::regex_match(selected, groups, expression))
        return {false, {}};
    return {true, groups[group_].str()};
}

std::pair<bool, std::string> mount_point::match(char const *host, char const *script,
                                                char const *path) const {
    return match(std::string(host), std::string(script), std::string(path));
}

}  // namespace cppcms

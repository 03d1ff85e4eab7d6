#pragma once

#include <booster/perl_regex.h>

#include <string>
#include <utility>

namespace cppcms {

/// Which requests an application gets, and which part of their path it gets as its URL. Expressions match
/// the whole of a variable; an empty regex object matches anything.
class mount_point {
  public:
    /// The variable that the URL is taken from.
    enum selection_type { match_path_info, match_script_name };

    /// Any request, with the whole PATH_INFO.
    mount_point() = default;
    /// By SCRIPT_NAME, with the whole PATH_INFO.
    mount_point(std::string const &script);
    /// By PATH_INFO, with the text of its \a group.
    mount_point(std::string const &path, int group);
    mount_point(std::string const &script, std::string const &path, int group);
    /// By the variable that is not selected, with the whole of the selected one.
    mount_point(selection_type selection, std::string const &non_selected);
    /// By the selected variable, with the text of its \a group.
    mount_point(selection_type selection, std::string const &selected, int group);
    mount_point(selection_type selection, std::string const &non_selected, std::string const &selected,
                int group);
    mount_point(selection_type selection, booster::regex const &host, booster::regex const &script,
                booster::regex const &path, int group);

    /// Whether a request matches, and the URL for the application.
    std::pair<bool, std::string> match(std::string const &host, std::string const &script,
                                       std::string const &path) const;
    std::pair<bool, std::string> match(char const *host, char const *script, char const *path) const;

    booster::regex host() const { return host_; }
    booster::regex script_name() const { return script_; }
    booster::regex path_info() const { return path_; }
    int group() const { return group_; }
    selection_type selection() const { return selection_; }

    void host(booster::regex const &expression) { host_ = expression; }
    void script_name(booster::regex const &expression) { script_ = expression; }
    void path_info(booster::regex const &expression) { path_ = expression; }
    void group(int number) { group_ = number; }
    void selection(selection_type variable) { selection_ = variable; }

  private:
    booster::regex host_;
    booster::regex script_;
    booster::regex path_;
    int group_ = 0;
    selection_type selection_ = match_path_info;
};

}  // namespace cppcms

#include "WebApps/webconfig/data/About.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "WebApps/webconfig/apps/Settings.h"

namespace webconfig::apps {

namespace fs = std::filesystem;

namespace {

constexpr char title[] = "Open Source Software  Notices";

bool IsNotice(fs::directory_entry const &entry) {
    std::error_code failure;
    return !entry.path().filename().string().starts_with('.') &&
           (entry.is_symlink(failure) || entry.is_regular_file(failure));
}

std::set<data::OSSFile> NoticesIn(fs::path const &package) {
    std::set<data::OSSFile> notices;
    std::error_code failure;
    for (auto const &entry : fs::directory_iterator(package, failure)) {
        if (IsNotice(entry))
            notices.insert({entry.path().filename(), {}});
    }
    return notices;
}

std::string NoticeText(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "Failed to access \"" + path + '"';
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

bool Settings::GetOSSFiles(std::string const &directory, data::OSSCatalogue &catalogue) {
    catalogue.clear();
    std::error_code failure;
    for (auto const &entry : fs::directory_iterator(directory, failure)) {
        if (entry.is_symlink(failure) || !entry.is_directory(failure))
            continue;
        auto notices = NoticesIn(entry.path());
        if (!notices.empty())
            catalogue.emplace(entry.path().filename(), std::move(notices));
    }
    return !catalogue.empty();
}

void Settings::About() {
    data::About content;
    Prepare(content);
    content.title = title;
    GetOSSFiles(_licenceDirectory, content.packages);
    render("About", content);
}

void Settings::About(std::string package, std::string file) {
    data::About content;
    Prepare(content);
    content.title = title;
    GetOSSFiles(_licenceDirectory, content.packages);

    auto const entry = content.packages.find(package);
    if (entry != content.packages.end() && entry->second.erase({file, {}}) > 0)
        entry->second.insert({file, NoticeText(_licenceDirectory + '/' + package + '/' + file)});
    render("About", content);
}

}  // namespace webconfig::apps

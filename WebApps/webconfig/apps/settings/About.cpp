#include "WebApps/webconfig/data/About.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "WebApps/webconfig/apps/Settings.h"
#include "WebApps/webconfig/util/Files.h"
#include "WebApps/webconfig/util/FolderStates.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps {

namespace {

constexpr char const *title = util::Translatable("Open Source Software  Notices");

std::set<data::OSSFile> NoticesIn(std::string const &package) {
    std::set<data::OSSFile> notices;
    util::ForEachEntry(package, [&](dirent const &entry) {
        if (entry.d_name[0] != '.' && (entry.d_type == DT_REG || entry.d_type == DT_LNK))
            notices.insert({entry.d_name, {}});
    });
    return notices;
}

std::string NoticeText(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return util::Translate("Failed to access \"{1}\"", path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

bool Settings::GetOSSFiles(std::string const &directory, data::OSSCatalogue &catalogue) {
    // Of this worker: what it has read last, so that it reads the folders again only when they change.
    thread_local std::string readDirectory;
    thread_local util::FolderStates folders;
    thread_local data::OSSCatalogue found;
    if (directory == readDirectory && folders.AreUnchanged()) {
        catalogue = found;
        return !catalogue.empty();
    }
    readDirectory = directory;
    folders.Clear();
    folders.Add(directory);
    catalogue.clear();
    util::ForEachEntry(directory, [&](dirent const &entry) {
        std::string const package = entry.d_name;
        if (entry.d_type != DT_DIR || package == "." || package == "..")
            return;
        folders.Add(directory + '/' + package);
        auto notices = NoticesIn(directory + '/' + package);
        if (!notices.empty())
            catalogue.emplace(package, std::move(notices));
    });
    found = catalogue;
    return !catalogue.empty();
}

void Settings::About() {
    data::About content;
    Prepare(content);
    content.title = util::Translate(title);
    GetOSSFiles(_licenceDirectory, content.packages);
    render("About", content);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the URL dispatcher hands texts over by value
void Settings::About(std::string package, std::string file) {
    data::About content;
    Prepare(content);
    content.title = util::Translate(title);
    GetOSSFiles(_licenceDirectory, content.packages);

    auto const entry = content.packages.find(package);
    if (entry != content.packages.end() && entry->second.erase({file, {}}) > 0)
        entry->second.insert({file, NoticeText(_licenceDirectory + '/' + package + '/' + file)});
    render("About", content);
}

}  // namespace webconfig::apps

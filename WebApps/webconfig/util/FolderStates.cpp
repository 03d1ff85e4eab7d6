#include "WebApps/webconfig/util/FolderStates.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <map>

namespace webconfig::util {

namespace {

/// Coarser than the ticks of all file systems.
constexpr std::time_t settleSeconds = 1;

bool IsSame(timespec const &a, timespec const &b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

}  // namespace

void FolderStates::Add(std::string const &path) {
    Folder added{path, {}, false};
    added.settled =
        ::stat(path.c_str(), &added.state) == 0 &&
        std::max(added.state.st_mtim.tv_sec, added.state.st_ctim.tv_sec) + settleSeconds < std::time(nullptr);
    _folders.push_back(std::move(added));
}

bool FolderStates::AreUnchanged() const {
    return !_folders.empty() && std::all_of(_folders.begin(), _folders.end(), [](Folder const &before) {
        struct stat now {};
        return before.settled && ::stat(before.path.c_str(), &now) == 0 &&
               now.st_dev == before.state.st_dev && now.st_ino == before.state.st_ino &&
               IsSame(now.st_mtim, before.state.st_mtim) && IsSame(now.st_ctim, before.state.st_ctim);
    });
}

bool AreAbsent(std::initializer_list<char const *> paths) {
    // By the first path: the folder as it was when nothing was there.
    thread_local std::map<std::string, FolderStates, std::less<>> without;
    std::string const first = *paths.begin();
    FolderStates &folder = without[first];
    if (folder.AreUnchanged())
        return true;
    folder.Clear();
    folder.Add(first.substr(0, first.rfind('/')));
    bool const absent = std::all_of(paths.begin(), paths.end(), [](char const *path) {
        struct stat info {};
        return ::lstat(path, &info) != 0 && errno == ENOENT;
    });
    if (!absent)
        folder.Clear();
    return absent;
}

}  // namespace webconfig::util

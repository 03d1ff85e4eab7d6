#pragma once

#include <sys/stat.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace webconfig::util {

/// Tells whether what was read from some folders still holds, for less than reading them again.
class FolderStates {
  public:
    void Clear() { _folders.clear(); }
    /// To be called before the folder is read.
    void Add(std::string const &path);
    /// Whether each of the folders, one at least, has the entries that it had. False, too, where one had
    /// changed shortly before it was added: by its time another change within the same tick could not be
    /// seen.
    bool AreUnchanged() const;

  private:
    struct Folder {
        std::string path;
        struct stat state;
        bool settled;
    };

    std::vector<Folder> _folders;
};

/// Whether there is nothing at any of \a paths, all of them in the folder of the first. For what is hardly
/// ever there, and asked for again and again: a thread that has found nothing needs one look at the folder
/// until something comes or goes in it.
bool AreAbsent(std::initializer_list<char const *> paths);

}  // namespace webconfig::util

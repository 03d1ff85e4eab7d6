#pragma once

#include <sys/stat.h>

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

}  // namespace webconfig::util

#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cppcms::http {
class file;
}

namespace webconfig::util {

/// Whether \a path leads to anything that can be examined.
bool FileExists(std::string const &path);

/// Size in bytes; 0 where the file cannot be examined.
std::uintmax_t FileSize(std::string const &path);

/// Renames \a source to \a destination or, between file systems, runs "mv". True on success, which outlasts a
/// power cut. Only with a hardened shell may a path hold characters that have a meaning inside double quotes.
bool MoveFile(std::string const &source, std::string const &destination);

// What stands under a fixed name in /tmp may be anybody's. These take only a regular file that root or this
// process' user has made, under that one name; they follow no link and wait for nobody.

/// Whether \a user is root or this process' own.
bool IsTrustedUser(uid_t user);

/// Whether there is such a file.
bool IsTrustedFile(std::string const &path);

/// Opens it; its descriptor, or -1 with errno, which is EPERM where something else is there.
int OpenTrusted(std::string const &path, int flags);

/// Its first \a maximum bytes; nothing where there is none.
std::optional<std::string> ReadTrusted(std::string const &path, std::size_t maximum);

/// Makes sure that there is one. What else has the name is moved out of the way, which is logged. False, with
/// errno, where that fails.
bool ClaimFile(std::string const &path);

/// Makes an empty file that only its owner may open. False, with errno, where that fails, also where anything
/// is at \a path already, be it a link that leads nowhere.
bool CreatePrivately(std::string const &path);

/// The same with a content. On a failure no file is left.
bool WritePrivately(std::string const &path, std::string const &content);

/// Gives the file at \a path another content, for its owner's eyes only: at any moment, also one when the
/// power goes, either the old or the new one is there as a whole. False, with errno, where that fails.
bool ReplaceFile(std::string const &path, std::string const &content);

/// Removes the file; true when that outlasts a power cut. False, with errno, where that fails.
bool RemoveFile(std::string const &path);

/// Moves an uploaded file to \a path, which is to be in a PrivateFolder or made by CreatePrivately(); only
/// its owner may open it there. On a failure, which is logged, no file is left. \a sha256 gets
/// Sha256OfFile().
bool SaveUpload(cppcms::http::file &upload, std::string const &path, std::string *sha256 = nullptr);

/// A folder below /tmp that only its owner may enter. It goes with the object, and with it what is still in
/// it.
class PrivateFolder {
  public:
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(PrivateFolder const &) = delete;
    PrivateFolder &operator=(PrivateFolder const &) = delete;

    /// The path of a file in it; what is done with that fails where there was no room for the folder.
    std::string operator/(std::string const &name) const { return path_ + '/' + name; }

  private:
    std::string path_;
};

/// Hands every entry of a directory to \a visit, in the directory's order, "." and ".." included. False
/// where the directory cannot be read.
bool ForEachEntry(std::string const &directory, std::function<void(dirent const &)> const &visit);

/// Which entries FindFiles() returns.
enum class FindFilesType { Files = 0, Directories = 1, All = 2 };

/// The names, in the directory's order, of the entries of \a directory that match the extended regular
/// expression \a pattern anywhere. Files are regular files only, directories come without "." and "..".
/// Empty where the directory cannot be read or the pattern is malformed (which is logged).
std::vector<std::string> FindFiles(std::string const &directory, FindFilesType type,
                                   std::string const &pattern);

}  // namespace webconfig::util

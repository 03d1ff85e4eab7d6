#pragma once

#include <dirent.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace webconfig::util {

/// Whether \a path leads to anything that can be examined.
bool FileExists(std::string const &path);

/// Size in bytes; 0 where the file cannot be examined.
std::uintmax_t FileSize(std::string const &path);

/// Renames \a source to \a destination or, between file systems, runs "mv". True on success. Only with a
/// hardened shell may a path hold characters that have a meaning inside double quotes.
bool MoveFile(std::string const &source, std::string const &destination);

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

#pragma once

#include <sys/statfs.h>

#include <optional>
#include <string>

namespace webconfig::util {

/// How full the partition at \a path is, such as "Log Partition (1.5GB free, 20% used)" for the \a name "Log
/// Partition". Nothing where it cannot be told, or where the file system is not ext2, ext3 or ext4.
std::optional<std::string> PartitionText(std::string const &name, std::string const &path);

/// The same from known figures.
std::optional<std::string> PartitionText(std::string const &name, struct statfs const &figures);

}  // namespace webconfig::util

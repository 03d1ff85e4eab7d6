#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "parameters/ParameterFile.h"

/// Files to restore settings from.
namespace webconfig::settings {

enum class BackupFormat {
    Page,    ///< as the pages write their backup
    Export,  ///< as `prm export` writes it
};

/// One way to read a file. The keys are in their one spelling, and none is there twice.
struct BackupReading {
    BackupFormat format;
    std::vector<prm::Parameter> parameters;
};

/// Reads a backup of the pages, whose values are not escaped: lines of
///
///     "KEY","VALUE", TYPE
///
/// in the order of their keys, TYPE being i, f or s. A value may have quotes and line ends. Where a line
/// might begin a parameter or go on with the value before, the file is refused. It is taken for granted that
/// no key has a quote, and no value the end of a parameter followed by the beginning of one whose key fits
/// between. Throws prm::ParameterFileError.
std::vector<prm::Parameter> ReadPageBackup(std::string_view text);

/// All that \a text can be read as: two readings only where they differ. Throws prm::ParameterFileError where
/// it is neither, has no parameters at all, or more than a device has.
std::vector<BackupReading> ReadBackup(std::string const &text);

}  // namespace webconfig::settings

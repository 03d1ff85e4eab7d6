#pragma once

#include <cstdint>
#include <string>

#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::util {

/// What this device asks of an image.
struct FirmwareDemands {
    bool soundTree = false;  ///< it can be read, and is for this platform
    bool signature = false;  ///< one of the device's keys has signed it
    std::string platform;    ///< this one
    std::string running;     ///< the version that runs; empty where that is not known
    std::string keyFolder = "/etc/webconfig/firmware.d";
};

/// What an image is, in texts for the operator.
struct FirmwareVerdict {
    char const *reason = "";  ///< why it must not be installed, in a word; empty where it may
    Bilingual refusal;        ///< the same for the operator
    Bilingual version;        ///< with how it compares with the running one
    bool isOlder = false;     ///< than the running one
    Bilingual platform;
    Bilingual signature;           ///< who has signed it
    std::uintmax_t imageSize = 0;  ///< bytes of the image, without a signature's block
};

/// How the version \a offered compares with \a running, both anywhere in a text, by the numbers in them.
enum class Age { Unknown, Older, Same, Newer };
Age CompareVersions(std::string const &offered, std::string const &running);

/// The version that runs, from the lines of "ubi_get_volume_versions.sh"; empty where none says so.
std::string RunningVersion(std::string const &volumeVersions);

/// Looks into the image at \a path. What the image itself says is told as one
/// line of CleanText().
FirmwareVerdict JudgeFirmware(std::string const &path, FirmwareDemands const &demands);

}  // namespace webconfig::util

#pragma once

#include <string>
#include <vector>

#include "ctl/LocalSocket.h"

namespace ctl {

/// The command line.
struct Options : LocalService {
    std::string url;  ///< of another device; empty for this one
    std::string user = "admin";
    std::string passwordFile;
    std::string authorities;  ///< file of the certificates that are trusted; empty for the system's
    std::string pin;          ///< "sha256//" and the hash of the one key that is trusted
    long before = 0;          ///< of "history"
    long count = 20;
    bool confirmed = false;  ///< of "undo"
    bool json = false;
    std::vector<std::string> words;  ///< the command and its arguments
};

/// Throws Problem. Ends the process where only help or the version is asked for.
Options ReadOptions(int argc, char *argv[]);

}  // namespace ctl

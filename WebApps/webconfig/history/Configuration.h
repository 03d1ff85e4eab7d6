#pragma once

#include <cppcms/json.h>

#include <string>

namespace webconfig::history {

/// "webconfig.history" and "webconfig.trial" of the configuration. Where no file is named, no history is
/// kept, and without one nothing is on trial, for the way back is in it.
struct Configuration {
    std::string file;                                     ///< history.file
    int keep = 500;                                       ///< history.keep, in change sets
    std::string trial_file = "/var/lib/webconfig/trial";  ///< trial.file
    int trial_seconds = 0;                                ///< trial.seconds; 0: nothing is on trial
};

/// Throws cppcms::json::bad_value_cast where a member has the wrong type.
Configuration ReadConfiguration(cppcms::json::value const &settings);

}  // namespace webconfig::history

#include "WebApps/webconfig/history/Configuration.h"

namespace webconfig::history {

Configuration ReadConfiguration(cppcms::json::value const &settings) {
    Configuration configuration;
    auto const read = [&settings](char const *path, auto &value) {
        if (!settings.find(path).is_undefined())
            value = settings.get<std::decay_t<decltype(value)>>(path);
    };
    read("webconfig.history.file", configuration.file);
    read("webconfig.history.keep", configuration.keep);
    read("webconfig.trial.file", configuration.trial_file);
    read("webconfig.trial.seconds", configuration.trial_seconds);
    if (configuration.file.empty())
        configuration.trial_seconds = 0;
    return configuration;
}

}  // namespace webconfig::history

#include "WebApps/webconfig/apps/jsonrpc/CommandOutputs.h"

#include "WebApps/webconfig/util/Commands.h"

namespace webconfig::apps {

void AddOutputs(cppcms::json::value &status, std::span<CommandOutput const> commands) {
    for (auto const &[key, command, maximum] : commands)
        status[key] = util::ShellCommand(command, maximum);
}

}  // namespace webconfig::apps

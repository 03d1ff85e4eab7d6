#pragma once

#include <cppcms/json.h>

#include <span>

namespace webconfig::apps {

/// Most bytes of a command's output in a status, where nothing else is said.
constexpr unsigned maxOutput = 4096;

/// A command whose output goes into a status.
struct CommandOutput {
    char const *key;
    char const *command;
    unsigned maximum = maxOutput;
};

/// Runs the commands one after the other and adds their outputs to \a status.
void AddOutputs(cppcms::json::value &status, std::span<CommandOutput const> commands);

}  // namespace webconfig::apps

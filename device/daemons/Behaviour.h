#pragma once

#include <optional>
#include <string>

#include "device/daemons/Report.h"

namespace daemons {

/// Does to a datagram what the report says under its keys "answer" and "delay": waits, spoils it, or
/// keeps it back (then nothing is returned).
std::optional<std::string> Behave(Report &report, std::string datagram);

}  // namespace daemons

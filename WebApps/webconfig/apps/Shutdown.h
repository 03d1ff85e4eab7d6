#pragma once

#include <cppcms/service.h>

namespace webconfig::apps {

/// Ends the service: requests at hand are still answered, but not for longer than ten seconds, because the
/// commands that they run are ended before. util::AllowCommands() is to be called when the service is gone.
/// Any thread may call this, and more than once.
void Shutdown(cppcms::service &service);

}  // namespace webconfig::apps

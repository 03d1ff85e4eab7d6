#include "WebApps/webconfig/apps/Shutdown.h"

#include "WebApps/webconfig/util/Commands.h"

namespace webconfig::apps {

namespace {

/// Of the ten seconds that the framework waits for requests at hand; the others are for their answers.
constexpr std::chrono::seconds commandTime{8};

}  // namespace

void Shutdown(cppcms::service &service) {
    util::EndCommandsWithin(commandTime);
    service.shutdown();
}

}  // namespace webconfig::apps

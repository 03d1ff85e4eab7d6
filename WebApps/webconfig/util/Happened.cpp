#include "WebApps/webconfig/util/Happened.h"

#include <atomic>

namespace webconfig::util {

namespace {

std::atomic<Recorder> current = nullptr;

}  // namespace

void RecordWith(Recorder recorder) {
    current = recorder;
}

bool IsRecorded() {
    return current != nullptr;
}

void Happened(char const *event, Outcome outcome, Details details) {
    if (Recorder const recorder = current)
        recorder(event, outcome, details);
}

}  // namespace webconfig::util

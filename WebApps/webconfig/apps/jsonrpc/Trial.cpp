#include "WebApps/webconfig/history/Trial.h"

#include "WebApps/webconfig/apps/JsonRpc.h"
#include "WebApps/webconfig/data/History.h"

namespace webconfig::apps {

namespace {

constexpr std::chrono::seconds turnLimit{3};

/// Does as the button on the pages does; false where there is nothing that it could be done to.
cppcms::json::value Press(bool (*button)()) {
    history::TrialTurn const turn(*history::TheTrialFile(), turnLimit);
    return turn.IsMine() && button();
}

}  // namespace

cppcms::json::value JsonRpc::TrialStatus() {
    static constexpr char const *names[] = {"none", "waiting", "running", "returning", "returned"};
    auto const current = history::CurrentTrial();
    data::TrialNotice const trial = data::Told(current);
    cppcms::json::value status;
    status["state"] = names[static_cast<int>(trial.kind)];
    status["seconds"] = trial.seconds;
    if (current)
        status["set"] = current->set;
    return status;
}

cppcms::json::value JsonRpc::TrialKeep() {
    return Press(history::KeepTrial);
}

cppcms::json::value JsonRpc::TrialTakeBack() {
    return Press(history::EndTrial);
}

}  // namespace webconfig::apps

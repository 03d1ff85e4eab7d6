#include "WebApps/webconfig/apps/jsonrpc/SharedPoll.h"

namespace webconfig::apps {

void SharedPoll::Join(booster::shared_ptr<cppcms::rpc::json_call> call) {
    _waiting.push_back(std::move(call));
    if (_served.empty())
        _Start();
}

void SharedPoll::_Start() {
    _served.swap(_waiting);
    _gathering.Start(_gather, [this](Outcome const &outcome) { _Answer(outcome); });
}

void SharedPoll::_Answer(Outcome const &outcome) {
    for (auto const &call : _served)
        AnswerCall(*call, outcome);
    _served.clear();
    if (!_waiting.empty())
        _Start();
}

}  // namespace webconfig::apps

#include "WebApps/webconfig/apps/jsonrpc/CallQueue.h"

namespace webconfig::apps {

void CallQueue::Join(booster::shared_ptr<cppcms::rpc::json_call> call, util::Requester requester) {
    _waiting.push_back({std::move(call), std::move(requester)});
    if (_waiting.size() == 1)
        _Start();
}

void CallQueue::_Start() {
    Waiting const &first = _waiting.front();  // stays where it is while others join
    auto const gather = [this, &first] { return _serve({first.call->params(), first.requester, _service}); };
    _gathering.Start(gather, [this](Outcome const &outcome) {
        AnswerCall(*_waiting.front().call, outcome);
        _waiting.pop_front();
        if (!_waiting.empty())
            _Start();
    });
}

}  // namespace webconfig::apps

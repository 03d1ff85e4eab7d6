#pragma once

#include <deque>

#include "WebApps/webconfig/apps/jsonrpc/Gathering.h"
#include "WebApps/webconfig/util/Requester.h"

namespace webconfig::apps {

/// The calls of one method that has parameters, served one after the other: each has an answer of its own.
class CallQueue : public booster::noncopyable {
  public:
    struct Call {
        cppcms::json::array const &parameters;
        util::Requester const &requester;
        cppcms::service &service;
    };
    /// Gathers the answer to a call, on another thread than the event loop's; may throw Refused.
    using Serve = cppcms::json::value (*)(Call const &call);

    CallQueue(cppcms::service &service, Serve serve)
        : _service(service), _gathering(service), _serve(serve) {}

    bool IsFull() const { return _waiting.size() >= maxWaiting; }

    /// Answers \a call, a released one, of \a requester when its answer is there. For the service's event
    /// loop only.
    void Join(booster::shared_ptr<cppcms::rpc::json_call> call, util::Requester requester);

  private:
    static constexpr std::size_t maxWaiting = 16;

    struct Waiting {
        booster::shared_ptr<cppcms::rpc::json_call> call;
        util::Requester requester;
    };

    void _Start();

    cppcms::service &_service;
    Gathering _gathering;
    Serve const _serve;
    std::deque<Waiting> _waiting;  // the first one is being served
};

}  // namespace webconfig::apps

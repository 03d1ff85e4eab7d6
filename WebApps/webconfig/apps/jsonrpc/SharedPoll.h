#pragma once

#include <vector>

#include "WebApps/webconfig/apps/jsonrpc/Gathering.h"

namespace webconfig::apps {

/// The polls of one status method. Those that have come while an answer was gathered share the next one, so
/// ten browsers cost as much as two.
class SharedPoll : public booster::noncopyable {
  public:
    /// Gathers the answer. An undefined value stands for none: HTTP status 404.
    using Gather = cppcms::json::value (*)();

    SharedPoll(cppcms::service &service, Gather gather) : _gathering(service), _gather(gather) {}

    /// Whether as many polls wait as may: those of a hundred browsers, but not all that come while a command
    /// hangs.
    bool IsFull() const { return _waiting.size() >= maxWaiting; }

    /// Answers \a call, a released one, when its answer is there. For the service's event loop only.
    void Join(booster::shared_ptr<cppcms::rpc::json_call> call);

  private:
    static constexpr std::size_t maxWaiting = 100;

    using Calls = std::vector<booster::shared_ptr<cppcms::rpc::json_call>>;

    void _Start();
    void _Answer(Outcome const &outcome);

    Gathering _gathering;
    Gather const _gather;
    Calls _waiting;  // for the next answer
    Calls _served;   // by the answer that is being gathered
};

}  // namespace webconfig::apps

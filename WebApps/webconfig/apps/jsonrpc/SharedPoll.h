#pragma once

#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>
#include <cppcms/json.h>
#include <cppcms/rpc_json.h>
#include <cppcms/service.h>

#include <thread>
#include <vector>

namespace webconfig::apps {

/// The polls of one status method. Those that have come while an answer was gathered share the next one, so
/// ten browsers cost as much as two; and an answer is gathered on a thread of its own, which lives only as
/// long as that takes, so a silent daemon holds up nobody who asks for something else.
class SharedPoll : public booster::noncopyable {
  public:
    /// Gathers the answer. An undefined value stands for none: HTTP status 404.
    using Gather = cppcms::json::value (*)();

    SharedPoll(cppcms::service &service, Gather gather) : _service(service), _gather(gather) {}
    /// Waits until an answer that is being gathered is there. To be called after the service has ended.
    ~SharedPoll();

    /// Whether as many polls wait as may: those of a hundred browsers, but not all that come while a command
    /// hangs.
    bool IsFull() const { return _waiting.size() >= maxWaiting; }

    /// Answers \a call, a released one, when its answer is there. For the service's event loop only.
    void Join(booster::shared_ptr<cppcms::rpc::json_call> call);

  private:
    static constexpr std::size_t maxWaiting = 100;

    using Calls = std::vector<booster::shared_ptr<cppcms::rpc::json_call>>;

    void _Start();
    void _Run();
    void _Answer(cppcms::json::value const *status);

    cppcms::service &_service;
    Gather const _gather;
    Calls _waiting;  // for the next answer
    Calls _served;   // by the answer that is being gathered
    std::thread _thread;
};

}  // namespace webconfig::apps

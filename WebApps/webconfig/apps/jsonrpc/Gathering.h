#pragma once

#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>
#include <cppcms/json.h>
#include <cppcms/rpc_json.h>
#include <cppcms/service.h>

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

namespace webconfig::apps {

/// Thrown by a method to answer its call with an error that is more than a text.
class Refused : public std::exception {
  public:
    explicit Refused(cppcms::json::value error) : _error(std::move(error)) {}
    Refused(char const *code, std::string const &message);

    cppcms::json::value const &Error() const { return _error; }

  private:
    cppcms::json::value _error;
};

/// What a status method has come to.
struct Outcome {
    bool done = false;
    cppcms::json::value value;  ///< the result, undefined for none (HTTP status 404), or the error
};

/// Answers \a call, a released one. For the service's event loop only, where nothing may be thrown.
void AnswerCall(cppcms::rpc::json_call &call, Outcome const &outcome);

/// Gathers answers on a thread of its own, so that a silent daemon holds up nobody who asks for something
/// else. The thread is kept while polls go on: to make one costs more than most answers.
class Gathering : public booster::noncopyable {
  public:
    explicit Gathering(cppcms::service &service) : _service(service) {}
    /// Waits until what is being gathered is there. To be called after the service has ended.
    ~Gathering();

    using Gather = std::function<cppcms::json::value()>;
    using Done = std::function<void(Outcome const &outcome)>;
    /// Runs \a gather, then \a done on the service's event loop, where this is to be called, too; not before
    /// the last one is done.
    void Start(Gather const &gather, Done const &done);

  private:
    void _Work();

    cppcms::service &_service;
    std::mutex _guard;
    std::condition_variable _changed;
    std::function<void()> _next;  // what the thread is to do, if anything
    bool _works = false;          // whether the thread looks at that again
    bool _ends = false;
    std::thread _thread;
};

}  // namespace webconfig::apps

#include "WebApps/webconfig/apps/jsonrpc/Gathering.h"

#include <cppcms/http_context.h>
#include <cppcms/http_response.h>

#include <chrono>
#include <memory>
#include <system_error>

#include "WebApps/webconfig/apps/jsonrpc/CleanTexts.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";
/// Longer than pages wait between two polls.
constexpr auto patience = std::chrono::seconds(3);
constexpr char internalError[] = "Internal Service Error";  // as the framework says it

void LogFailure(std::exception const &problem) {
    WEBCONFIG_LOG(error, logTag) << "A status call failed: " << problem.what();
}

Outcome OutcomeOf(Gathering::Gather const &gather) {
    try {
        Outcome outcome{true, gather()};
        CleanTexts(outcome.value);
        return outcome;
    } catch (Refused const &refusal) {
        Outcome outcome{false, refusal.Error()};
        CleanTexts(outcome.value);
        return outcome;
    } catch (cppcms::json::bad_value_cast const &) {
        return {false, "Invalid parameters"};  // as the framework says it
    } catch (std::exception const &problem) {
        LogFailure(problem);
        return {false, internalError};
    }
}

}  // namespace

Refused::Refused(char const *code, std::string const &message) {
    _error["code"] = code;
    _error["message"] = message;
}

void AnswerCall(cppcms::rpc::json_call &call, Outcome const &outcome) {
    try {
        if (!outcome.done) {
            call.return_error(outcome.value);
        } else if (outcome.value.is_undefined()) {
            call.context().response().status(cppcms::http::response::not_found);
            call.context().async_complete_response();
        } else {
            call.return_result(outcome.value);
        }
    } catch (std::exception const &problem) {
        LogFailure(problem);
    }
}

Gathering::~Gathering() {
    {
        std::lock_guard const lock(_guard);
        _ends = true;
    }
    _changed.notify_one();
    if (_thread.joinable())
        _thread.join();
}

void Gathering::Start(Gather const &gather, Done const &done) {
    std::lock_guard const lock(_guard);
    _next = [this, gather, done] {
        auto const outcome = std::make_shared<Outcome>(OutcomeOf(gather));
        _service.post([outcome, done] { done(*outcome); });
    };
    if (_works) {
        _changed.notify_one();
        return;
    }
    if (_thread.joinable())
        _thread.join();  // it has nothing more to do, and does not ask for the lock again
    try {
        _thread = std::thread([this] { _Work(); });
        _works = true;
    } catch (std::system_error const &problem) {
        WEBCONFIG_LOG(error, logTag) << "No thread for a status call: " << problem.what();
        _next = nullptr;
        _service.post([done] { done({false, internalError}); });
    }
}

void Gathering::_Work() {
    std::unique_lock lock(_guard);
    while (_changed.wait_for(lock, patience, [this] { return _next || _ends; }) && _next) {
        auto const work = std::exchange(_next, nullptr);
        lock.unlock();
        work();
        lock.lock();
    }
    _works = false;
}

}  // namespace webconfig::apps

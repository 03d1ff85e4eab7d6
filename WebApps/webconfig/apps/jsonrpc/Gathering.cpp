#include "WebApps/webconfig/apps/jsonrpc/Gathering.h"

#include <cppcms/http_context.h>
#include <cppcms/http_response.h>

#include <memory>
#include <system_error>

#include "WebApps/webconfig/apps/jsonrpc/CleanTexts.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";
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
    if (_thread.joinable())
        _thread.join();
}

void Gathering::Start(Gather const &gather, Done const &done) {
    if (_thread.joinable())
        _thread.join();  // it has posted its answer: there is nothing to wait for
    try {
        _thread = std::thread([this, gather, done] {
            auto const outcome = std::make_shared<Outcome>(OutcomeOf(gather));
            _service.post([outcome, done] { done(*outcome); });
        });
    } catch (std::system_error const &problem) {
        WEBCONFIG_LOG(error, logTag) << "No thread for a status call: " << problem.what();
        done({false, internalError});
    }
}

}  // namespace webconfig::apps

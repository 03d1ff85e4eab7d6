#include "WebApps/webconfig/apps/jsonrpc/SharedPoll.h"

#include <cppcms/http_context.h>
#include <cppcms/http_response.h>

#include <exception>
#include <memory>
#include <system_error>

#include "WebApps/webconfig/apps/jsonrpc/CleanTexts.h"
#include "WebApps/webconfig/util/Log.h"

namespace webconfig::apps {

namespace {

constexpr char logTag[] = "WebApps/webconfig/apps/JsonRpc";

void LogFailure(std::exception const &problem) {
    WEBCONFIG_LOG(error, logTag) << "A status call failed: " << problem.what();
}

void AnswerOne(cppcms::rpc::json_call &call, cppcms::json::value const *status) {
    if (!status) {
        call.return_error("Internal Service Error");  // as the framework says it
    } else if (status->is_undefined()) {
        call.context().response().status(cppcms::http::response::not_found);
        call.context().async_complete_response();
    } else {
        call.return_result(*status);
    }
}

}  // namespace

SharedPoll::~SharedPoll() {
    if (_thread.joinable())
        _thread.join();
}

void SharedPoll::Join(booster::shared_ptr<cppcms::rpc::json_call> call) {
    _waiting.push_back(std::move(call));
    if (_served.empty())
        _Start();
}

void SharedPoll::_Start() {
    _served.swap(_waiting);
    if (_thread.joinable())
        _thread.join();  // it has posted its answer: there is nothing to wait for
    try {
        _thread = std::thread([this] { _Run(); });
    } catch (std::system_error const &problem) {
        WEBCONFIG_LOG(error, logTag) << "No thread for a status call: " << problem.what();
        _Answer(nullptr);
    }
}

/// The thread. It hands the answer to the event loop, where alone calls may be answered.
void SharedPoll::_Run() {
    std::shared_ptr<cppcms::json::value> status;
    try {
        status = std::make_shared<cppcms::json::value>(_gather());
        CleanTexts(*status);
    } catch (std::exception const &problem) {
        LogFailure(problem);
        status.reset();
    }
    _service.post([this, status] { _Answer(status.get()); });
}

/// \a status is null where gathering it failed. Runs outside any call, where an exception would end the
/// service.
void SharedPoll::_Answer(cppcms::json::value const *status) {
    for (auto const &call : _served) {
        try {
            AnswerOne(*call, status);
        } catch (std::exception const &problem) {
            LogFailure(problem);
        }
    }
    _served.clear();
    if (!_waiting.empty())
        _Start();
}

}  // namespace webconfig::apps

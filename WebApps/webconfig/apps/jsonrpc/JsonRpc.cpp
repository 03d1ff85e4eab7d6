#include "WebApps/webconfig/apps/JsonRpc.h"

#include <cppcms/http_request.h>
#include <cppcms/service.h>

#include "WebApps/webconfig/apps/Shutdown.h"
#include "WebApps/webconfig/apps/jsonrpc/Methods.h"
#include "WebApps/webconfig/history/Recorder.h"
#include "WebApps/webconfig/settings/Catalogue.h"
#include "WebApps/webconfig/util/Util.h"

namespace webconfig::apps {

namespace {

void CheckNumber(cppcms::json::array const &given, std::size_t wanted) {
    if (given.size() != wanted)
        throw cppcms::rpc::call_error("Invalid parametres number");  // as the framework says it
}

template <typename Queue>
void CheckRoom(Queue const &queue) {
    if (queue.IsFull())
        throw cppcms::rpc::call_error("Too many calls wait for this answer");
}

}  // namespace

JsonRpc::JsonRpc(cppcms::service &service)
    : cppcms::rpc::json_rpc_server(service),
      _machines(history::IsKept() && service.settings().get("webconfig.api", false)) {
    for (auto const &method : Methods()) {
        if (IsOffered(method.feature, _machines))
            std::visit([&](auto handler) { _Bind(method.name, method.parameters.size(), handler); },
                       method.handler);
    }
}

void JsonRpc::_Bind(char const *method, std::size_t parameters, SharedPoll::Gather gather) {
    SharedPoll &poll = *_polls.emplace_back(std::make_unique<SharedPoll>(service(), gather));
    auto const join = [this, parameters, &poll](cppcms::json::array const &given) {
        CheckNumber(given, parameters);
        CheckRoom(poll);
        poll.Join(release_call());
    };
    bind(method, join, method_role);
}

void JsonRpc::_Bind(char const *method, std::size_t parameters, CallQueue::Serve serve) {
    CallQueue &queue = *_queues.emplace_back(std::make_unique<CallQueue>(service(), serve));
    auto const join = [this, parameters, &queue](cppcms::json::array const &given) {
        CheckNumber(given, parameters);
        CheckRoom(queue);
        util::Requester requester{request().remote_user(), request().remote_addr(), settings::machines};
        queue.Join(release_call(), std::move(requester));
    };
    bind(method, join, method_role);
}

template <typename... Parameters>
void JsonRpc::_Bind(char const *method, std::size_t /*parameters*/, void (JsonRpc::*handler)(Parameters...)) {
    bind(method, cppcms::rpc::json_method(handler, this), method_role);
}

void JsonRpc::Reload() {
    util::MarkForceReload(true);
    Shutdown(service());
}

void JsonRpc::Discover() {
    return_result(MethodsDocument(_machines));
}

}  // namespace webconfig::apps

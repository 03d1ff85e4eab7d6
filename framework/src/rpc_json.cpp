#include <cppcms/rpc_json.h>

#include <booster/log.h>
#include <cppcms/filters.h>
#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace cppcms::rpc {

namespace {

constexpr char json_type[] = "application/json";
constexpr std::string_view accepted_types[] = {json_type, "application/jsonrequest", "application/json-rpc"};

bool is_call(json::value const &request) {
    return request.type() == json::is_object && request.type("method") == json::is_string &&
           request.type("params") == json::is_array && !request.find("id").is_undefined();
}

}  // namespace

json_call::json_call(booster::shared_ptr<http::context> const &context, json::object const &request)
    : method_(request.at("method").str()), params_(request.at("params").array()), context_(context) {
    if (auto const &id = request.at("id"); !id.is_null())
        id_ = id;
}

http::context &json_call::context() {
    auto const context = context_.lock();
    if (!context)
        throw cppcms_error("The request of the JSON-RPC call is over");
    return *context;
}

void json_call::answer(json::value const &error, json::value const &result) {
    auto &response = context().response();
    response.set_content_header(json_type);
    response.out() << "{\"id\":" << id_ << ",\"error\":" << error << ",\"result\":" << result << '}';
    if (released_)
        released_->async_complete_response();
}

void json_call::return_result(json::value const &result) {
    answer(json::null(), result);
}

void json_call::return_error(json::value const &error) {
    answer(error, json::null());
}

json_rpc_server::json_rpc_server(cppcms::service &srv) : application(srv) {}

json_rpc_server::~json_rpc_server() = default;

void json_rpc_server::bind(std::string const &name, method_type const &method, role_type role) {
    methods_[name] = {method, role};
}

void json_rpc_server::main(std::string) {
    current_.reset();
    if (auto const *problem = accept_call()) {
        response().set_plain_text_header();
        response().out() << problem << '\n';
        return;
    }
    serve_call();
}

char const *json_rpc_server::accept_call() {
    if (std::ranges::find(accepted_types, request().content_type_parsed().media_type()) ==
        std::end(accepted_types))
        return "Invalid content type";
    if (request().request_method() != "POST")
        return "Invalid request method";
    auto const [data, size] = request().raw_post_data();
    auto const *text = static_cast<char const *>(data);
    json::value call;
    if (!call.load(text, text + size, true))
        return "Invalid JSON";
    if (!is_call(call))
        return "Invalid JSON-RPC";
    current_.reset(new json_call(get_context(), call.object()));
    return nullptr;
}

void json_rpc_server::serve_call() {
    auto const name = method();
    BOOSTER_DEBUG("cppcms") << "JSON-RPC Method call:" << filters::jsescape(name);
    auto const found = methods_.find(name);
    bool const wants_answer = !notification();
    if (found == methods_.end()) {
        if (wants_answer)
            return_error("Method not found");
    } else if (found->second.role == notification_role && wants_answer) {
        return_error("The request should be notification");
    } else if (found->second.role != method_role || wants_answer) {
        run(found->second);
    }
}

void json_rpc_server::run(bound_method const &method) {
    auto const call = current_;  // the method may release it
    auto const fail = [&](char const *text) {
        if (!call->notification())
            call->return_error(text);
    };
    try {
        method.call(call->params());
    } catch (call_error const &error) {
        fail(error.what());
    } catch (json::bad_value_cast const &) {
        fail("Invalid parameters");
    } catch (std::exception const &error) {
        BOOSTER_ERROR("cppcms") << "JSON-RPC method " << call->method() << ": " << error.what();
        fail("Internal Service Error");
    }
}

booster::shared_ptr<json_call> json_rpc_server::release_call() {
    auto call = std::move(current_);
    if (call)
        call->released_ = release_context();
    return call;
}

json_call &json_rpc_server::current() {
    if (!current_)
        throw cppcms_error("JSON-RPC Request is not assigned to class");
    return *current_;
}

std::string json_rpc_server::method() {
    return current().method();
}

bool json_rpc_server::notification() {
    return current().notification();
}

json::array const &json_rpc_server::params() {
    return current().params();
}

void json_rpc_server::return_result(json::value const &result) {
    current().return_result(result);
}

void json_rpc_server::return_error(json::value const &error) {
    current().return_error(error);
}

}  // namespace cppcms::rpc

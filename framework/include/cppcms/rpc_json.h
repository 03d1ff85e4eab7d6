#pragma once

#include <booster/function.h>
#include <booster/noncopyable.h>
#include <booster/shared_ptr.h>
#include <cppcms/application.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/json.h>

#include <cstddef>
#include <map>
#include <string>
#include <type_traits>
#include <utility>

/// JSON-RPC 1.0 over HTTP POST.
namespace cppcms::rpc {

/// Thrown by a method to answer its call with an error text.
class call_error : public cppcms_error {
  public:
    call_error(std::string const &text) : cppcms_error(text) {}
};

/// One call of a client.
class json_call : public booster::noncopyable {
  public:
    std::string method() { return method_; }
    /// A call that wants no answer.
    bool notification() { return id_.is_undefined(); }
    json::array const &params() { return params_; }
    /// cppcms_error where the request is already over.
    http::context &context();

    // Write the answer. Of a released call they also complete the response.
    void return_result(json::value const &result);
    void return_error(json::value const &error);

  private:
    friend class json_rpc_server;

    json_call(booster::shared_ptr<http::context> const &context, json::object const &request);
    void answer(json::value const &error, json::value const &result);

    std::string method_;
    json::array params_;
    json::value id_;  // undefined for a notification
    booster::weak_ptr<http::context> context_;
    booster::shared_ptr<http::context> released_;  // owned from release_call() on
};

/// An application that serves JSON-RPC calls by the methods bound to it.
class json_rpc_server : public application {
  public:
    /// What a method may be called as.
    enum role_type { any_role, method_role, notification_role };
    typedef booster::function<void(json::array const &)> method_type;

    json_rpc_server(cppcms::service &srv);
    ~json_rpc_server() override;

    /// Binds a method, replacing one of the same name. It answers through return_result() or
    /// return_error(); a call_error it throws becomes the call's error, a json::bad_value_cast the error
    /// "Invalid parameters", any other std::exception "Internal Service Error".
    void bind(std::string const &name, method_type const &method, role_type role = any_role);

    /// Serves the current request, whatever its URL.
    void main(std::string url) override;

    /// Detaches the current call from this application, to be answered later.
    booster::shared_ptr<json_call> release_call();

    // The current call, which is kept until the next one; cppcms_error where there is none.
    std::string method();
    bool notification();
    json::array const &params();
    void return_result(json::value const &result);
    void return_error(json::value const &error);

  private:
    struct bound_method {
        method_type call;
        role_type role;
    };

    json_call &current();
    /// Makes the request the current call; returns what is wrong with it, nothing where it is fine.
    char const *accept_call();
    void serve_call();
    void run(bound_method const &method);

    std::map<std::string, bound_method> methods_;
    booster::shared_ptr<json_call> current_;
};

/// A member function of up to four parameters as a method: checks their number, and converts each by
/// json::value::get_value(). \a object is a pointer or behaves as one.
template <typename Class, typename Pointer, typename... Parameters>
auto json_method(void (Class::*method)(Parameters...), Pointer object) {
    static_assert(sizeof...(Parameters) <= 4);
    return [=](json::array const &params) {
        if (params.size() != sizeof...(Parameters))
            throw call_error("Invalid parametres number");
        [&]<std::size_t... Index>(std::index_sequence<Index...>) {
            ((*object).*method)(params[Index].template get_value<std::decay_t<Parameters>>()...);
        }
        (std::index_sequence_for<Parameters...>());
    };
}

}  // namespace cppcms::rpc

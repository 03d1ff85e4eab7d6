#include "request_cycle.h"

#include <booster/backtrace.h>
#include <booster/log.h>
#include <cppcms/application.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <http/body_reader.h>
#include <http/environment.h>

#include <sstream>

namespace cppcms::impl {

namespace {

/// An application for the time of a request.
class lease : public booster::noncopyable {
  public:
    explicit lease(application_source &source) : source_(source), app_(source.take()) {}
    ~lease() {
        if (app_)
            source_.give_back(app_);
    }
    application *get() const { return app_.get(); }

  private:
    application_source &source_;
    booster::intrusive_ptr<application> app_;
};

std::string text_of(environment const &variables, std::string_view name) {
    return std::string(variables.get(name));
}

void report(http::context &context, std::exception const &problem, bool display_errors) {
    std::ostringstream trace;
    trace << booster::trace(problem);
    BOOSTER_ERROR("cppcms") << "Caught exception [" << problem.what() << "]\n" << trace.str();
    if (context.response().some_output_was_written())
        return;
    context.response().make_error_response(
        http::response::internal_server_error,
        display_errors ? problem.what() + std::string("\n") + trace.str() : std::string());
}

void run_main(application &app, http::context &context, std::string const &url, bool display_errors) {
    try {
        app.main(url);
    } catch (std::exception const &problem) {
        report(context, problem, display_errors);
    } catch (...) {
        BOOSTER_ERROR("cppcms") << "Unknown exception";
    }
}

void run_application(booster::shared_ptr<http::context> const &context, mount_table::match const &found,
                     bool display_errors) {
    try {
        lease const borrowed(*found.source);
        if (!borrowed.get()) {
            context->refuse({.status = http::response::not_found});
            return;
        }
        application &app = *borrowed.get();
        app.assign_context(context);
        run_main(app, *context, found.url, display_errors);
        // An application that released its context completes it later.
        if (app.release_context() == context)
            context->complete_response();
    } catch (std::exception const &problem) {
        report(*context, problem, display_errors);
        context->complete_response();
    } catch (...) {
        BOOSTER_ERROR("cppcms") << "Unknown exception";
        context->complete_response();
    }
}

void refuse(http::context &context, refusal const &problem) {
    BOOSTER_WARNING("cppcms") << "Request refused with " << problem.status << ": " << problem.reason;
    context.refuse(problem);
}

/// Runs the application when the body has come.
void load_and_run(booster::shared_ptr<http::context> const &context, mount_table::match const &found,
                  event_loop &loop, bool display_errors) {
    refusal problem;
    if (!context->load(problem)) {
        context->await_body([=, &loop] { load_and_run(context, found, loop, display_errors); });
    } else if (problem) {
        refuse(*context, problem);
    } else if (found.source->is_asynchronous()) {
        context->response().io_mode(http::response::asynchronous);
        loop.post([=] { run_application(context, found, display_errors); });
    } else {
        run_application(context, found, display_errors);
    }
}

}  // namespace

void serve_request(booster::shared_ptr<http::context> const &context, request_rules const &rules,
                   mount_table const &mounts, event_loop &loop, bool display_errors) {
    environment const &variables = context->environment();
    if (refusal const problem = rules.check(variables)) {
        refuse(*context, problem);
        return;
    }
    auto const found = mounts.find(text_of(variables, "HTTP_HOST"), text_of(variables, "SCRIPT_NAME"),
                                   text_of(variables, "PATH_INFO"));
    if (!found) {
        context->refuse({.status = http::response::not_found});
        return;
    }
    load_and_run(context, *found, loop, display_errors);
}

}  // namespace cppcms::impl

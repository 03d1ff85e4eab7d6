#pragma once

#include <cppcms/http_context.h>
#include <cppcms/http_response.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <fcntl.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fronts/connection.h"
#include "http/body_reader.h"
#include "http/environment.h"

/// Settings without a log on the screen.
inline cppcms::json::value QuietSettings(std::string const &locale = "C.UTF-8") {
    cppcms::json::value settings;
    settings.set("logging.stderr", false);
    settings.set("localization.locales", std::vector<std::string>{locale});
    return settings;
}

/// What a test's client sends.
struct FakeInput {
    std::string method = "POST";
    std::string query = {};
    std::string content_type = "application/x-www-form-urlencoded";
    std::string body = {};
};

/// A request without a client, and the response that was written to it.
class FakeRequest {
  public:
    FakeRequest(cppcms::service &service, FakeInput const &input) : answer_(std::make_shared<std::string>()) {
        cppcms::impl::environment variables;
        variables.add("REQUEST_METHOD", input.method);
        variables.add("QUERY_STRING", input.query);
        variables.add("CONTENT_TYPE", input.content_type);
        variables.add("CONTENT_LENGTH", std::to_string(input.body.size()));
        auto connection = std::make_unique<Connection>(input.body, answer_);
        context_ =
            std::make_shared<cppcms::http::context>(service, std::move(connection), std::move(variables));
        cppcms::impl::refusal problem;
        context_->load(problem);
    }

    cppcms::http::context &context() { return *context_; }
    std::shared_ptr<cppcms::http::context> shared_context() { return context_; }

    /// What was sent so far.
    std::string const &Sent() const { return *answer_; }

    /// Ends the response; the header lines, an empty line and the body.
    std::string Answer() {
        context_->response().finalize();
        return *answer_;
    }

  private:
    class Connection : public cppcms::impl::connection {
      public:
        Connection(std::string const &body, std::shared_ptr<std::string> const &answer)
            : connection(open("/dev/null", O_RDWR | O_CLOEXEC), Registry(), 0),
              body_(body),
              answer_(answer) {}

        input read_head(cppcms::impl::environment &) override { return input::closed; }
        piece read_body() override {
            if (std::exchange(read_, true))
                return {input::complete, {}};
            return {input::incomplete, body_};
        }
        bool write(std::string_view first, std::string_view second, chunk) override {
            answer_->append(first).append(second);
            return true;
        }
        bool finish() override { return false; }
        int idle_limit() const override { return 0; }

      private:
        static cppcms::impl::connection_registry &Registry() {
            static cppcms::impl::connection_registry registry;
            return registry;
        }

        std::string body_;
        bool read_ = false;
        std::shared_ptr<std::string> answer_;
    };

    std::shared_ptr<std::string> answer_;
    std::shared_ptr<cppcms::http::context> context_;
};

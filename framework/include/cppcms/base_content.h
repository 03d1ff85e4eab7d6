#pragma once

#include <booster/noncopyable.h>

namespace cppcms {

class application;

/// Base of the records that views show.
class base_content {
  public:
    base_content() = default;
    base_content(base_content const &) = default;
    base_content &operator=(base_content const &) = default;
    virtual ~base_content() = default;

    /// The application that renders this record. Set only meanwhile; otherwise cppcms_error is thrown.
    application &app();
    void app(application &app) { app_ = &app; }
    void reset_app() { app_ = nullptr; }
    bool has_app() { return app_ != nullptr; }

    /// Lends an application to a record that has none, for as long as the guard lives.
    class app_guard : public booster::noncopyable {
      public:
        app_guard(base_content &content, application &app);
        /// The application of \a from, if it has one.
        app_guard(base_content &content, base_content &from);
        ~app_guard();

      private:
        base_content *lent_to_ = nullptr;
    };

  private:
    application *app_ = nullptr;
};

}  // namespace cppcms

#pragma once

#include <cppcms/application.h>

#include <string>

namespace webconfig::apps {

/// Root of the page applications: routes every page URL to one of them.
class WebConfig : public cppcms::application {
  public:
    explicit WebConfig(cppcms::service &service);

    /// While a firmware upgrade runs, every URL shows its progress. Posts are served one after the other.
    void main(std::string url) override;
};

}  // namespace webconfig::apps

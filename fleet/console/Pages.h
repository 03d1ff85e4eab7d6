#pragma once

#include <cppcms/application.h>

#include <string>

#include "fleet/console/views/Page.h"

namespace fleet::console {

/// The pages of the console, below "fleet.root". They are shells: scripts fill them by calls of the Rpc.
class Pages : public cppcms::application {
  public:
    explicit Pages(cppcms::service &service);

    void main(std::string url) override;

  private:
    void _Show(std::string const &view, std::string title, std::string subject = {});

    void _Devices();
    void _Device(std::string id);
    void _RollOut();
    void _Rollouts();
    void _Rollout(std::string number);
};

}  // namespace fleet::console

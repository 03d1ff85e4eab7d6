#pragma once

#include <vexa/vexa.h>

#include <memory>
#include <tuple>

namespace webconfig::util {

/// Keeps the latest answer of each daemon.
class VexaHandler : public cVexa_Handler {
  public:
    /// Keeps a copy of \a message in place of the one kept before, if it is an answer of a daemon. Returns
    /// true.
    bool HandleMessage(cVexaMsg *message, char const *sender, cVexa &client) override;

    /// Gives away the latest answer of this class; null where there is none.
    template <typename Answer>
    std::unique_ptr<Answer> Take() {
        return std::move(std::get<std::unique_ptr<Answer>>(latest_));
    }

  private:
    template <typename Answer>
    void Keep(cVexaMsg const &message);

    std::tuple<std::unique_ptr<cVexaMsgGPRSStats>, std::unique_ptr<cVexaMsgServerStats>,
               std::unique_ptr<cVexaMsgOpenVPNStats>>
        latest_;
};

}  // namespace webconfig::util

#pragma once

#include <vexa/vexa.h>

#include <memory>
#include <string>

#include "device/daemons/Report.h"
#include "device/daemons/Serve.h"

namespace daemons {

/// Answers one kind of request on the message service.
class MessageServer : public Server, private cVexa_Handler {
  public:
    using MakeAnswer = std::unique_ptr<cVexaMsg>(Report &report);

    /// Serves as \a name, and answers requests of type \a request with what \a makeAnswer makes of the
    /// report in the file \a reportFile at that time. Ends the program where the name is taken.
    MessageServer(char const *name, std::string reportFile, std::uint32_t request, MakeAnswer *makeAnswer);

    int Descriptor() const override { return endpoint_.GetFd(); }
    void Process() override { endpoint_.Process(); }

  private:
    bool HandleMessage(cVexaMsg *message, char const *sender, cVexa &client) override;

    cVexa endpoint_;
    std::string reportFile_;
    std::uint32_t request_;
    MakeAnswer *makeAnswer_;
};

}  // namespace daemons

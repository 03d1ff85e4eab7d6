#pragma once

#include <string>

#include "device/daemons/Serve.h"

namespace daemons {

/// The serial daemon's own socket: answers requests for the ports' statistics with what its report file says
/// at that time, and takes everything else without a word.
class SerialServer : public Server {
  public:
    /// Ends the program where somebody else serves there.
    explicit SerialServer(std::string reportFile);
    ~SerialServer() override;

    int Descriptor() const override { return socket_; }
    void Process() override;

  private:
    std::string reportFile_;
    int socket_;
};

}  // namespace daemons

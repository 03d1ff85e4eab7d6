#pragma once

#include <vexa/Messages.h>

#include <string>
#include <utility>

namespace daemons {

/// A message that is sent as the bytes it is given.
class RawMessage : public cVexaMsg {
  public:
    explicit RawMessage(std::string bytes) : cVexaMsg(0), bytes_(std::move(bytes)) {}

    int Pack(char *buffer, unsigned int size) const override {
        return static_cast<int>(bytes_.copy(buffer, size));
    }

  private:
    std::string bytes_;
};

}  // namespace daemons

#pragma once

#include <ios>

namespace booster::locale {

/// What a stream knows about the messages that are written to it.
class ios_info {
  public:
    static ios_info get(std::ios_base &stream) { return ios_info(stream); }

    /// The domain whose catalogue translates; 0 is the first one of the stream's locale.
    int domain_id() const;
    void domain_id(int id);

  private:
    explicit ios_info(std::ios_base &stream) : stream_(stream) {}

    std::ios_base &stream_;
};

}  // namespace booster::locale

#pragma once

#include <string>

#include "WebApps/webconfig/data/Message.h"

namespace webconfig::apps {

/// A page's writes to the parameter store, in their order. The first one that fails ends the sequence:
/// what follows is not written.
class ParameterWriter {
  public:
    ParameterWriter &Set(std::string const &key, std::string const &value);

    /// Whether every write so far succeeded.
    bool Ok() const { return _ok; }
    /// The page message: saved, or save error.
    data::Message Result() const;

  private:
    bool _ok = true;
};

}  // namespace webconfig::apps

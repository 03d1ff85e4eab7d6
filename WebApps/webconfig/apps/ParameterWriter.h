#pragma once

#include <string>
#include <vector>

#include "WebApps/webconfig/data/Message.h"

namespace webconfig::apps {

/// A page's writes to the parameter store, in their order. The first one that fails ends the sequence:
/// what follows is not written.
class ParameterWriter {
  public:
    ParameterWriter &Set(std::string const &key, std::string const &value);
    ParameterWriter &Set(std::string const &key, int value);
    /// Stores "yes" or "no".
    ParameterWriter &SetSwitch(std::string const &key, bool on);

    /// The same, only where the store holds another value. What is missing in the store counts as an
    /// empty text, and as a switch that is off.
    ParameterWriter &SetIfChanged(std::string const &key, std::string const &value);
    ParameterWriter &SetSwitchIfChanged(std::string const &key, bool on);

    /// Whether every write so far succeeded.
    bool Ok() const { return _ok; }
    /// Whether \a key was written, for what has to follow a change.
    bool Wrote(std::string const &key) const;
    /// The page message: \a saved, or save error.
    data::Message Result(data::Message saved = data::Message::SaveOK()) const;

  private:
    template <typename Value>
    ParameterWriter &_Write(std::string const &key, Value const &value);

    bool _ok = true;
    std::vector<std::string> _written;
};

}  // namespace webconfig::apps

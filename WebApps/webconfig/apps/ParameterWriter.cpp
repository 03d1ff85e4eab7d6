#include "WebApps/webconfig/apps/ParameterWriter.h"

#include <algorithm>
#include <utility>

#include "WebApps/webconfig/util/Prm.h"
#include "WebApps/webconfig/util/Switch.h"

namespace webconfig::apps {

template <typename Value>
ParameterWriter &ParameterWriter::_Write(std::string const &key, Value const &value) {
    _ok = _ok && util::Prm::Set(key, value);
    if (_ok)
        _written.push_back(key);
    return *this;
}

ParameterWriter &ParameterWriter::Set(std::string const &key, std::string const &value) {
    return _Write(key, value);
}

ParameterWriter &ParameterWriter::Set(std::string const &key, int value) {
    return _Write(key, value);
}

ParameterWriter &ParameterWriter::SetSwitch(std::string const &key, bool on) {
    return _Write(key, util::SwitchText(on));
}

ParameterWriter &ParameterWriter::SetIfChanged(std::string const &key, std::string const &value) {
    return _ok && util::Prm::GetString(key) != value ? Set(key, value) : *this;
}

ParameterWriter &ParameterWriter::SetSwitchIfChanged(std::string const &key, bool on) {
    return _ok && util::IsOn(key) != on ? SetSwitch(key, on) : *this;
}

bool ParameterWriter::Wrote(std::string const &key) const {
    return std::find(_written.begin(), _written.end(), key) != _written.end();
}

data::Message ParameterWriter::Result(data::Message saved) const {
    return _ok ? std::move(saved) : data::Message::SaveError();
}

}  // namespace webconfig::apps

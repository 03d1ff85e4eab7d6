#include "WebApps/webconfig/apps/ParameterWriter.h"

#include "WebApps/webconfig/util/Prm.h"

namespace webconfig::apps {

ParameterWriter &ParameterWriter::Set(std::string const &key, std::string const &value) {
    _ok = _ok && util::Prm::Set(key, value);
    return *this;
}

data::Message ParameterWriter::Result() const {
    return _ok ? data::Message::SaveOK() : data::Message::SaveError();
}

}  // namespace webconfig::apps

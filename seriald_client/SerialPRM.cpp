#include "seriald_client/SerialPRM.h"

#include <algorithm>
#include <iterator>

namespace {

struct Function {
    std::string_view value;
    int id;
};

constexpr Function functions[] = {
    {"none", cSerialPRM::functionNone},
    {"shell", cSerialPRM::functionShell},
    {"gprs_dialup", cSerialPRM::functionGprsDialup},
};

struct Port {
    std::string_view key;
    std::string_view tty;
    std::uint32_t clientId;
};

constexpr Port ports[] = {
    {"serial/port/gprs/function", "/dev/serial/by-id/usb-cellular-modem-modem", 1},
    {"serial/port/tcp1/function", "tcp1", 11},
};

/// The field \a wanted of the row whose field \a by is \a value; \a otherwise where there is none.
template <typename Row, std::size_t Size, typename Key, typename Value>
Value LookUp(Row const (&table)[Size], Key Row::*by, Key value, Value Row::*wanted, Value otherwise) {
    auto const row = std::find_if(std::begin(table), std::end(table),
                                  [&](Row const &candidate) { return candidate.*by == value; });
    return row == std::end(table) ? otherwise : row->*wanted;
}

constexpr std::string_view noText;

}  // namespace

int cSerialPRM::GetFuncIdFromPRMValue(std::string_view value) {
    return LookUp(functions, &Function::value, value, &Function::id, functionNone);
}

std::string_view cSerialPRM::GetPRMValueForFuncId(int functionId) {
    return LookUp(functions, &Function::id, functionId, &Function::value, noText);
}

std::string_view cSerialPRM::GetTTY(std::string_view key) {
    return LookUp(ports, &Port::key, key, &Port::tty, noText);
}

std::string_view cSerialPRM::GetPrmParname(std::string_view tty) {
    return LookUp(ports, &Port::tty, tty, &Port::key, noText);
}

std::uint32_t cSerialPRM::GetSerialdClientID(std::string_view tty) {
    return LookUp(ports, &Port::tty, tty, &Port::clientId, std::uint32_t{0});
}

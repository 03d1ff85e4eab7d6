#pragma once

#include <cstdint>
#include <string_view>

/// The fixed tables of serial ports and of what they can be used for. Texts that are not there are empty.
class cSerialPRM {
  public:
    /// Ids of serial functions, as the daemon counts them.
    static constexpr int functionNone = -1;
    static constexpr int functionShell = 2;
    static constexpr int functionGprsDialup = 4;

    /// The function id of a parameter's value; functionNone where there is no such function.
    static int GetFuncIdFromPRMValue(std::string_view value);
    /// The parameter's value of a function id.
    static std::string_view GetPRMValueForFuncId(int functionId);
    /// The device of a port, by the key of the port's parameter.
    static std::string_view GetTTY(std::string_view key);
    /// The key of the parameter of the port with this device.
    static std::string_view GetPrmParname(std::string_view tty);
    /// The client id of the owner of a device; 0 where there is no such port.
    static std::uint32_t GetSerialdClientID(std::string_view tty);
};

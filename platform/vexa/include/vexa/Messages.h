#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

/// A message between a client and a daemon. On the wire it is its type, followed by the fields of its class
/// in their order here, without gaps, integers in native byte order. Texts end with a NUL.
class cVexaMsg {
  public:
    explicit cVexaMsg(std::uint32_t type) : type_(type) {}
    virtual ~cVexaMsg() = default;

    /// Writes the message into \a buffer, which has room for \a size bytes, and returns the number of bytes
    /// written; -1 where not even the type fits. What a class does where only its payload does not fit is
    /// said there.
    virtual int Pack(char *buffer, unsigned int size) const;

    std::uint32_t Type() const { return type_; }

  private:
    std::uint32_t type_;
};

/// Answer of seriald: the cellular modem.
class cVexaMsgGPRSStats : public cVexaMsg {
  public:
    static constexpr std::uint32_t messageType = 8;

    cVexaMsgGPRSStats() : cVexaMsg(messageType) {}
    /// Where the payload does not fit, writes only the type and returns the size needed, 404.
    int Pack(char *buffer, unsigned int size) const override;

    char modemType[32]{};
    char modemFirmwareVersion[16]{};
    char modemSerialNumber[32]{};
    char mobileNumber[32]{};  ///< may go on with "^" and the assembly number
    char simCcid[32]{};
    std::uint32_t networkKind = 0;   ///< 2 GSM family, 3 CDMA
    std::int32_t signalQuality = 0;  ///< 0 to 31 and 99 as modems report it; negative: dBm
    std::uint32_t bitErrorRate = 0;  ///< class, 0 to 7
    char network[64]{};              ///< name of the operator
    std::uint32_t forcedAutomatic = 0;
    std::uint32_t accessTechnology = 0;
    std::int32_t frequency = 0;  ///< MHz; 0 or less: unknown
    std::uint32_t simStatus = 0;
    char apn[128]{};
    std::uint32_t secondsConnected = 0;
    std::int32_t moduleTemperature = 0;      ///< degrees Celsius; the smallest value: unknown
    std::int32_t temperatureIndication = 0;  ///< -2 to 2
    std::uint32_t pppTxPackets = 0;
    std::uint32_t pppRxPackets = 0;
    std::uint32_t pppTxBytes = 0;
    std::uint32_t pppRxBytes = 0;
    std::uint32_t pppTxBytesTotal = 0;
    std::uint32_t pppRxBytesTotal = 0;
};

/// Answer of statusd: the link to the site server.
class cVexaMsgServerStats : public cVexaMsg {
  public:
    static constexpr std::uint32_t messageType = 15;

    cVexaMsgServerStats() : cVexaMsg(messageType) {}
    /// Where the payload does not fit, writes only the type and returns 4.
    int Pack(char *buffer, unsigned int size) const override;

    std::uint8_t connected = 0;
    std::uint32_t serverAddress = 0;  ///< IPv4, host order
    std::uint8_t flag = 0;            ///< this and what follows mean something to the daemon only
    std::uint32_t counters[4]{};
    std::uint16_t value = 0;
};

/// Answer of openvpnd: the OpenVPN client.
class cVexaMsgOpenVPNStats : public cVexaMsg {
  public:
    static constexpr std::uint32_t messageType = 22;

    cVexaMsgOpenVPNStats() : cVexaMsg(messageType) {}
    /// Where the payload does not fit, writes only the type and returns 4.
    int Pack(char *buffer, unsigned int size) const override;

    std::uint8_t connected = 0;
    std::uint32_t secondsInState = 0;
    char status[64]{};
};

/// To seriald.
class cVexaMsgRequestGPRSStats : public cVexaMsg {
  public:
    static constexpr std::uint32_t messageType = 9;
    cVexaMsgRequestGPRSStats() : cVexaMsg(messageType) {}
};

/// To statusd.
class cVexaMsgRequestServerStats : public cVexaMsg {
  public:
    static constexpr std::uint32_t messageType = 14;
    cVexaMsgRequestServerStats() : cVexaMsg(messageType) {}
};

/// To openvpnd.
class cVexaMsgRequestOpenVPNStats : public cVexaMsg {
  public:
    static constexpr std::uint32_t messageType = 21;
    cVexaMsgRequestOpenVPNStats() : cVexaMsg(messageType) {}
};

namespace vexa {

/// The message that the \a size bytes at \a data are, all of them. Null where they are none: unknown type,
/// or another length than that type has. Texts are terminated whatever arrived.
std::unique_ptr<cVexaMsg> Unpack(char const *data, std::size_t size);

}  // namespace vexa

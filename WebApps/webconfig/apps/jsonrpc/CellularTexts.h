#pragma once

#include <cstdint>
#include <string>

/// What the codes of the modem mean, in words. Codes that mean nothing are "Unknown".
namespace webconfig::apps::cellular {

std::string SimStatusText(std::uint32_t code);
/// Empty, and code 10 of the SIM status: "Unknown".
std::string SimCcidText(std::string const &ccid, std::uint32_t simStatus);

/// \a quality is 0 to 31 or, where negative, dBm.
std::string SignalStrengthText(std::int32_t quality);
/// \a networkKind is 2 for the GSM family, 3 for CDMA; \a errorClass is 0 to 7.
std::string BitErrorRateText(std::uint32_t networkKind, std::uint32_t errorClass);
/// \a frequency is in MHz, 0 or less where it is not known.
std::string ConnectionTypeText(std::uint32_t networkKind, std::uint32_t technology, std::int32_t frequency);

/// Degrees Celsius with an HTML degree sign, which the page shows as such.
std::string TemperatureText(std::int32_t degrees);
std::string TemperatureIndicationText(std::int32_t indication);

/// A modem tells its number and, after a "^", its assembly number in one text.
struct Numbers {
    std::string mobile;
    bool hasAssembly = false;
    std::string assembly;
};
Numbers SplitNumbers(std::string const &text);

}  // namespace webconfig::apps::cellular

#include "WebApps/webconfig/apps/jsonrpc/CellularTexts.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <span>

#include "WebApps/webconfig/util/Signal.h"
#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::apps::cellular {

namespace {

using util::Translatable;

constexpr char const *unknown = Translatable("Unknown");

constexpr std::uint32_t gsm = 2;
constexpr std::uint32_t cdma = 3;

struct CodeText {
    std::int64_t code;
    char const *text;
};

constexpr CodeText simStates[] = {
    {0, Translatable("SIM error")},
    {1, Translatable("Waiting for status query")},
    {2, Translatable("Ready")},
    {11, Translatable("Not inserted")},
};
constexpr std::uint32_t simWithoutCcid = 10;

constexpr CodeText gsmErrorRates[] = {
    {0, "< 0.2%"}, {1, "0.4%"}, {2, "0.8%"},  {3, "1.6%"},
    {4, "3.2%"},   {5, "6.4%"}, {6, "12.8%"}, {7, "> 12.8%"},
};
constexpr CodeText cdmaErrorRates[] = {
    {0, "< 0.01%"}, {1, "0.1%"}, {2, "0.5%"}, {3, "1.0%"},
    {4, "2.0%"},    {5, "4.0%"}, {6, "8.0%"}, {7, "> 8.0%"},
};

constexpr CodeText gsmTechnologies[] = {
    {0, "GPRS"},       {2, "3G"},         {3, "GPRS w/EDGE"},
    {4, "3G w/HSDPA"}, {5, "3G w/HSUPA"}, {6, "3G w/HSDPA+HSUPA"},
    {7, "4G E-UTRAN"},
};
constexpr CodeText cdmaTechnologies[] = {{1, "1xRTT"}, {2, "EVDO"}, {3, "EVDO"}};

constexpr CodeText temperatureIndications[] = {
    {-2, Translatable("Below lowest temp limit (shutdown)")},
    {-1, Translatable("Below low temp alert limit")},
    {0, Translatable("Normal operating temperature")},
    {1, Translatable("Above upper temp alert limit")},
    {2, Translatable("Above uppermost temp limit (shutdown)")},
};

std::string TextOf(std::int64_t code, std::span<CodeText const> texts) {
    auto const found =
        std::find_if(texts.begin(), texts.end(), [&](CodeText const &entry) { return entry.code == code; });
    return found == texts.end() ? unknown : found->text;
}

std::string TechnologyText(std::uint32_t networkKind, std::uint32_t technology) {
    switch (networkKind) {
        case gsm:
            return TextOf(technology, gsmTechnologies);
        case cdma:
            return "CDMA - " + TextOf(technology, cdmaTechnologies);
        default:
            return unknown;
    }
}

}  // namespace

std::string SimStatusText(std::uint32_t code) {
    return TextOf(code, simStates);
}

// Code 10 blanks the number although that code's own text is "Unknown": pollers rely on it.
std::string SimCcidText(std::string const &ccid, std::uint32_t simStatus) {
    return ccid.empty() || simStatus == simWithoutCcid ? unknown : ccid;
}

std::string SignalStrengthText(std::int32_t quality) {
    auto const strength = util::SignalDbm(quality);
    if (!strength)
        return Translatable("Not known or not detectable");
    if (quality == 0)
        return Translatable("-113 dBm or less");
    if (quality == 31)
        return Translatable("-51 dBm or greater");
    return std::to_string(*strength) + " dBm";
}

std::string BitErrorRateText(std::uint32_t networkKind, std::uint32_t errorClass) {
    switch (networkKind) {
        case gsm:
            return TextOf(errorClass, gsmErrorRates);
        case cdma:
            return TextOf(errorClass, cdmaErrorRates);
        default:
            return unknown;
    }
}

std::string ConnectionTypeText(std::uint32_t networkKind, std::uint32_t technology, std::int32_t frequency) {
    std::string const technologyText = TechnologyText(networkKind, technology);
    return frequency > 0 ? technologyText + " (≈" + std::to_string(frequency) + "MHz)" : technologyText;
}

std::string TemperatureText(std::int32_t degrees) {
    return degrees == std::numeric_limits<std::int32_t>::min() ? unknown
                                                               : std::to_string(degrees) + "&#176;C";
}

std::string TemperatureIndicationText(std::int32_t indication) {
    return TextOf(indication, temperatureIndications);
}

Numbers SplitNumbers(std::string const &text) {
    auto const mark = text.find('^');
    if (mark == std::string::npos)
        return {text, false, ""};
    return {text.substr(0, mark), true, text.substr(mark + 1)};
}

}  // namespace webconfig::apps::cellular

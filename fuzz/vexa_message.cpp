// A datagram of the daemons' message service: what is taken for a message has all its bytes, texts that end,
// and packs into a datagram that unpacks to the same message.
#include <vexa/Messages.h>

#include <cassert>
#include <cstring>
#include <string>

namespace {

template <std::size_t Size>
void CheckText(char const (&text)[Size]) {
    assert(::strnlen(text, Size) < Size);
}

void CheckTexts(cVexaMsg const &message) {
    if (auto const *const gprs = dynamic_cast<cVexaMsgGPRSStats const *>(&message)) {
        CheckText(gprs->modemType);
        CheckText(gprs->modemFirmwareVersion);
        CheckText(gprs->modemSerialNumber);
        CheckText(gprs->mobileNumber);
        CheckText(gprs->simCcid);
        CheckText(gprs->network);
        CheckText(gprs->apn);
    } else if (auto const *const openVpn = dynamic_cast<cVexaMsgOpenVPNStats const *>(&message)) {
        CheckText(openVpn->status);
    }
}

std::string Packed(cVexaMsg const &message) {
    char buffer[512];
    int const size = message.Pack(buffer, sizeof buffer);
    assert(size > 0 && size <= static_cast<int>(sizeof buffer));
    return {buffer, static_cast<std::size_t>(size)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    auto const message = vexa::Unpack(reinterpret_cast<char const *>(data), size);
    if (!message)
        return 0;
    CheckTexts(*message);
    std::string const packed = Packed(*message);
    assert(packed.size() == size);
    auto const again = vexa::Unpack(packed.data(), packed.size());
    assert(again && again->Type() == message->Type());
    assert(Packed(*again) == packed);
    return 0;
}

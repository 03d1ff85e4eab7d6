#include <vexa/vexa.h>

int cVexaMsg::Pack(char *, unsigned int) const {
    return -1;
}
int cVexaMsgGPRSStats::Pack(char *, unsigned int) const {
    return -1;
}
int cVexaMsgServerStats::Pack(char *, unsigned int) const {
    return -1;
}
int cVexaMsgOpenVPNStats::Pack(char *, unsigned int) const {
    return -1;
}
std::unique_ptr<cVexaMsg> vexa::Unpack(char const *, std::size_t) {
    return nullptr;
}

cVexa::cVexa(char const *, cVexa_Handler *) {}
cVexa::~cVexa() = default;
int cVexa::Listen() {
    return -1;
}
int cVexa::Send(char const *, cVexaMsg const *) {
    return -1;
}
void cVexa::Process() {}
void cVexa::Close() {}

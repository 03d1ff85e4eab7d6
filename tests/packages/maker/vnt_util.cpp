#include <vnt_util/GlobalLock.h>
#include <vnt_util/system.h>

namespace vnt_util {

GlobalLock::GlobalLock(int descriptor) : descriptor_(descriptor) {}
GlobalLock::~GlobalLock() = default;
std::string system::GetBarcodeASN(int *) {
    return {};
}
bool system::SetBarcodeASN(std::string const &) {
    return false;
}
int system::exec(std::string const &, std::string &) {
    return 127;
}

}  // namespace vnt_util

#include <vnt_util/GlobalLock.h>

#include <unistd.h>

namespace vnt_util {

GlobalLock::GlobalLock(int descriptor) : descriptor_(descriptor) {}

GlobalLock::~GlobalLock() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

}  // namespace vnt_util

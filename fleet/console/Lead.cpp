#include "fleet/console/Lead.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace fleet::console {

Lead::~Lead() {
    if (_file >= 0)
        ::close(_file);
}

bool Lead::Has() {
    if (_file < 0)
        _file = ::open(_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (_file < 0)
        throw std::system_error(errno, std::system_category(), _path);
    if (!_has)
        _has = ::flock(_file, LOCK_EX | LOCK_NB) == 0;
    return _has;
}

}  // namespace fleet::console

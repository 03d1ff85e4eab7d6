// Preloaded into a program, ends it right behind one of its system calls that change a file: the one whose
// number, counted since then, is in the file that END_ARMED names; where "power" follows, the power of the
// whole device goes.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

char const *Variable(char const *name) {
    char const *const value = std::getenv(name);
    return value ? value : "";
}

/// Empty where the file is not there.
std::array<char, 16> TextIn(char const *path) {
    std::array<char, 16> text{};
    int const file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0 || ::read(file, text.data(), text.size() - 1) < 0)
        return {};
    ::close(file);
    return text;
}

void Count() {
    static std::atomic<long> calls = 0;
    auto const armed = TextIn(Variable("END_ARMED"));
    long const last = std::strtol(armed.data(), nullptr, 10);
    if (last == 0 || ++calls != last)
        return;
    ::unlinkat(AT_FDCWD, Variable("END_ARMED"), 0);  // whoever is started again goes on
    if (!std::strstr(armed.data(), "power"))
        ::kill(::getpid(), SIGKILL);
    ::kill(1, SIGPWR);
    ::raise(SIGSTOP);  // until the kill that reaches every process
}

/// What the program runs is not counted.
[[gnu::constructor]] void Begin() {
    ::unsetenv("LD_PRELOAD");
}

bool IsFile(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
}

template <typename Function, typename... Arguments>
auto Call(char const *name, Arguments... arguments) {
    auto const original = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
    auto const result = original(arguments...);
    Count();
    return result;
}

}  // namespace

extern "C" {

ssize_t write(int file, void const *data, size_t size) {
    auto const original = reinterpret_cast<decltype(&write)>(::dlsym(RTLD_NEXT, "write"));
    ssize_t const written = original(file, data, size);
    if (IsFile(file))
        Count();
    return written;
}

ssize_t pwrite64(int file, void const *data, size_t size, off64_t offset) {
    return Call<decltype(&pwrite64)>("pwrite64", file, data, size, offset);
}

int ftruncate64(int file, off64_t size) noexcept {
    return Call<decltype(&ftruncate64)>("ftruncate64", file, size);
}

int fsync(int file) {
    return Call<decltype(&fsync)>("fsync", file);
}

int fdatasync(int file) {
    return Call<decltype(&fdatasync)>("fdatasync", file);
}

int rename(char const *from, char const *to) noexcept {
    return Call<decltype(&rename)>("rename", from, to);
}

int unlink(char const *path) noexcept {
    return Call<decltype(&unlink)>("unlink", path);
}
}

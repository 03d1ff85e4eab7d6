#include <vnt_util/system.h>

#include <fcntl.h>
#include <shell/Shell.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace vnt_util::system {

namespace {

constexpr std::size_t maxOutput = std::size_t{1} << 20;
constexpr std::string_view blanks = " \t\r\n";

std::string BarcodeFile() {
    char const *const name = std::getenv("BARCODE_ASN_FILE");
    return name && *name ? name : "/etc/barcode-asn";
}

std::string Trimmed(std::string const &text) {
    auto const first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool IsControl(char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

bool WriteDurably(std::string const &path, std::string const &text) {
    int const file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0)
        return false;
    bool const written =
        ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && ::fsync(file) == 0;
    return ::close(file) == 0 && written;
}

bool SyncFolderOf(std::string const &path) {
    auto const slash = path.rfind('/');
    std::string const folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    int const handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0)
        return false;
    bool const synced = ::fsync(handle) == 0;
    ::close(handle);
    return synced;
}

}  // namespace

std::string GetBarcodeASN(int *status) {
    std::ifstream file(BarcodeFile());
    std::string line;
    bool const read = static_cast<bool>(std::getline(file, line));
    if (status)
        *status = read ? 0 : -1;
    return Trimmed(line);
}

bool SetBarcodeASN(std::string const &asn) {
    if (std::any_of(asn.begin(), asn.end(), IsControl))
        return false;
    std::string const path = BarcodeFile();
    std::string const next = path + ".new";
    return WriteDurably(next, asn + '\n') && std::rename(next.c_str(), path.c_str()) == 0 &&
           SyncFolderOf(path);
}

int exec(std::string const &command, std::string &output) {
    output.clear();
    ::shell::Process process(command);
    std::array<char, 4096> chunk{};
    while (output.size() < maxOutput) {
        std::size_t const count = process.Read(chunk.data(), chunk.size());
        if (count == 0)
            break;
        output.append(chunk.data(), std::min(count, maxOutput - output.size()));
    }
    int const status = process.Wait();
    if (status < 0)
        return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace vnt_util::system

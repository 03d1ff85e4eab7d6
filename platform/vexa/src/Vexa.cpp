#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>
#include <vexa/vexa.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

/// Room for the longest message, and for a byte that tells a longer datagram.
constexpr unsigned maxMessage = 512;
/// Datagrams that one call of Process() takes.
constexpr int maxPending = 64;
constexpr int openAttempts = 8;

/// Before every name; the NUL makes the address abstract.
constexpr std::string_view prefix("\0vexa/", 6);

/// The address of a name. Its length is 0 where there is none.
struct Address {
    Address() = default;
    explicit Address(std::string_view name) {
        if (name.empty() || prefix.size() + name.size() > sizeof address.sun_path)
            return;
        address.sun_family = AF_UNIX;
        prefix.copy(address.sun_path, prefix.size());
        name.copy(address.sun_path + prefix.size(), name.size());
        length = offsetof(sockaddr_un, sun_path) + prefix.size() + name.size();
    }

    /// The name that this is the address of; empty where it is no address of ours.
    std::string Name() const {
        if (length <= offsetof(sockaddr_un, sun_path))
            return {};
        std::string_view const path(address.sun_path, length - offsetof(sockaddr_un, sun_path));
        return path.starts_with(prefix) ? std::string(path.substr(prefix.size())) : std::string();
    }

    sockaddr *get() { return reinterpret_cast<sockaddr *>(&address); }

    sockaddr_un address{};
    socklen_t length = 0;
};

/// A name nobody else has, unless process ids of several namespaces meet.
std::string UniqueName(std::string const &name) {
    static std::atomic<unsigned> count{0};
    return name + '/' + std::to_string(::getpid()) + '/' + std::to_string(++count);
}

}  // namespace

cVexa::cVexa(char const *name, cVexa_Handler *handler) : name_(name), handler_(handler) {}

cVexa::~cVexa() {
    Close();
}

int cVexa::Listen() {
    return descriptor_ < 0 && Bind(name_) ? 0 : -1;
}

int cVexa::Send(char const *destination, cVexaMsg const *message) {
    if (descriptor_ < 0 && !Open())
        return -1;
    char data[maxMessage];
    int const size = message->Pack(data, sizeof data);
    Address to(destination);
    if (size < 1 || static_cast<unsigned>(size) > sizeof data || to.length == 0)
        return -1;
    return static_cast<int>(::sendto(descriptor_, data, size, MSG_DONTWAIT, to.get(), to.length));
}

void cVexa::Process() {
    int dropped = 0;
    for (int count = 0; count < maxPending; ++count) {
        char data[maxMessage];
        Address from;
        from.length = sizeof from.address;
        ssize_t const size =
            ::recvfrom(descriptor_, data, sizeof data, MSG_DONTWAIT, from.get(), &from.length);
        if (size < 0)
            break;
        auto const message = vexa::Unpack(data, size);
        if (!message)
            ++dropped;
        else if (handler_)
            handler_->HandleMessage(message.get(), from.Name().c_str(), *this);
    }
    if (dropped > 0)
        ::syslog(LOG_WARNING, "vexa client %s: dropped %d datagrams that are no messages", name_.c_str(),
                 dropped);
}

void cVexa::Close() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
    descriptor_ = -1;
}

bool cVexa::Open() {
    for (int attempt = 0; attempt < openAttempts; ++attempt) {
        if (Bind(UniqueName(name_)))
            return true;
        if (errno != EADDRINUSE)
            break;
    }
    return false;
}

bool cVexa::Bind(std::string const &name) {
    Address own(name);
    descriptor_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (own.length > 0 && descriptor_ >= 0 && ::bind(descriptor_, own.get(), own.length) == 0)
        return true;
    int const reason = errno;
    Close();
    errno = reason;
    return false;
}

#include "device/daemons/Serve.h"

#include <poll.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string_view>

namespace daemons {

void Serve(std::vector<Server *> const &servers) {
    std::vector<pollfd> waits;
    waits.reserve(servers.size());
    for (Server const *server : servers)
        waits.push_back({.fd = server->Descriptor(), .events = POLLIN, .revents = 0});
    for (;;) {
        if (::poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR)
            Fail("poll");
        for (std::size_t index = 0; index < servers.size(); ++index)
            if (waits[index].revents != 0)
                servers[index]->Process();
    }
}

std::string ReportFile(char const *daemon, int argc, char **argv) {
    if (argc == 1)
        return std::string("/etc/daemons/") + daemon;
    bool const help = argc == 2 && argv[1] == std::string_view("--help");
    if (argc == 2 && !help)
        return argv[1];
    (help ? std::cout : std::cerr) << "Usage: " << daemon
                                   << " [FILE]\n\nServes what FILE, or else /etc/daemons/" << daemon
                                   << ", says at the time of each request.\n";
    std::exit(help ? EXIT_SUCCESS : 2);
}

void Fail(std::string const &reason) {
    std::cerr << reason << ": " << std::strerror(errno) << '\n';
    std::exit(EXIT_FAILURE);
}

}  // namespace daemons

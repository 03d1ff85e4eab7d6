#pragma once

#include <string>
#include <vector>

namespace daemons {

/// Something that is to be done when a descriptor becomes readable.
class Server {
  public:
    Server() = default;
    virtual ~Server() = default;
    Server(Server const &) = delete;
    Server &operator=(Server const &) = delete;

    virtual int Descriptor() const = 0;
    virtual void Process() = 0;
};

/// Serves until a signal ends the program.
[[noreturn]] void Serve(std::vector<Server *> const &servers);

/// The path of the report file of \a daemon: the only argument, or else /etc/daemons/ with its name. Ends the
/// program on other arguments.
std::string ReportFile(char const *daemon, int argc, char **argv);

/// Ends the program with a reason, to which that of the system is added.
[[noreturn]] void Fail(std::string const &reason);

}  // namespace daemons

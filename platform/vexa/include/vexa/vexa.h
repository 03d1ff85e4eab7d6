#pragma once

#include <vexa/Messages.h>

#include <string>

class cVexa;

/// Receives what arrives at a client.
class cVexa_Handler {
  public:
    virtual ~cVexa_Handler() = default;

    /// \a message lives until the call returns. \a sender is a name that \a client can send an answer to,
    /// empty where the sender has none. The result means nothing to this library.
    virtual bool HandleMessage(cVexaMsg *message, char const *sender, cVexa &client) = 0;
};

/// A client of the daemons' message service: sends messages to daemons by name, and hands what arrives to a
/// handler. Any number of clients, of the same name too, may live in a process; each belongs to one thread
/// at a time.
///
/// Messages are datagrams on abstract Unix sockets, so names are those of the network namespace, and nothing
/// is left of a client that dies. A daemon owns the address of its plain name. Every other client adds a part
/// of its own to its name when it opens its endpoint, so that an answer reaches the one that asked, and an
/// answer that is late reaches nobody.
class cVexa {
  public:
    /// \a handler may be null; what arrives is then dropped. Opens nothing yet.
    cVexa(char const *name, cVexa_Handler *handler);
    /// Calls Close().
    ~cVexa();

    cVexa(cVexa const &) = delete;
    cVexa &operator=(cVexa const &) = delete;

    /// Makes this client the daemon of its name. Returns 0, or -1 where it is open or the name is taken.
    int Listen();

    /// Delivers \a message to \a destination, opening the endpoint if needed. Never blocks. Returns the
    /// number of bytes sent; -1 where the endpoint cannot be opened, nobody has that name, or too many
    /// messages wait there, as at a daemon that has stopped reading.
    int Send(char const *destination, cVexaMsg const *message);

    /// Readable when something has arrived; -1 while the endpoint is not open.
    int GetFd() const { return descriptor_; }

    /// Hands the messages that have arrived to the handler. Datagrams that are no messages are dropped with
    /// a line in the system log. Takes a bounded number at once, so that a flood does not hold it.
    void Process();

    /// Closes the endpoint. The next Send() opens another.
    void Close();

  private:
    bool Open();
    bool Bind(std::string const &name);

    int descriptor_ = -1;
    std::string name_;
    cVexa_Handler *handler_;
};

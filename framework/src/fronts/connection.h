#pragma once

#include <booster/noncopyable.h>
#include <sys/types.h>

#include <boost/beast/core/flat_buffer.hpp>
#include <chrono>
#include <condition_variable>
#include <initializer_list>
#include <mutex>
#include <string_view>
#include <unordered_set>

namespace cppcms::impl {

class connection;
class environment;

/// The open connections, so that they can be cut off.
class connection_registry : public booster::noncopyable {
  public:
    void add(connection *c);
    void remove(connection *c);
    /// Ends all traffic: whoever waits on a connection finds it closed by the client.
    void shut_down_all();
    /// Waits until none is open, at most until \a deadline.
    void wait_until_empty(std::chrono::steady_clock::time_point deadline);

  private:
    std::mutex guard_;
    std::condition_variable removed_;
    std::unordered_set<connection *> open_;
};

/// A client of a front, with one request at a time. Used by one thread at a time. Nothing here waits for what
/// the client sends; who writes waits for it to take that, as long as it takes something within the time
/// limit of the front.
class connection : public booster::noncopyable {
  public:
    enum class input {
        complete,
        incomplete,  ///< the client has yet to send more
        closed,      ///< nothing more will come, or it is of no use
    };

    /// A piece of a body, and whether another one comes.
    struct piece {
        input state;
        std::string_view data;  ///< valid until more is read
    };

    /// What is to happen to output.
    enum class chunk {
        more,   ///< may be kept back until more comes
        flush,  ///< has to leave
        last,   ///< ends the response
    };

    /// Owns the socket. \a timeout in seconds, 0 for none.
    connection(int descriptor, connection_registry &registry, int timeout);
    virtual ~connection();

    /// Takes in what has come of the next request's head.
    virtual input read_head(environment &variables) = 0;
    /// Takes in what has come of the body. The state is incomplete with data: ask again; without: it has not
    /// come yet. Once the state is complete there is no more, also of what marks the end.
    virtual piece read_body() = 0;
    /// Sends a piece of the response, which is a CGI one: header lines, an empty line, the body. \a first
    /// goes before \a second. False where the client is gone.
    virtual bool write(std::string_view first, std::string_view second, chunk kind) = 0;
    /// Ends the request. True where the connection may bring another one.
    virtual bool finish() = 0;
    /// Whether a part of the next request has been read already.
    virtual bool has_input() const { return false; }
    /// Seconds for which the connection may wait for a request, 0 for ever.
    virtual int idle_limit() const = 0;

    /// This request is the last: the response, when written, tells so, and finish() will return false.
    void close_after_request() { last_request_ = true; }
    /// A part of the body stays unread. The client may be busy sending it when the connection closes, and
    /// would lose the answer that it has not read yet: what it still sends has to be drained for a while.
    void abandon_body();
    bool has_abandoned_body() const { return body_abandoned_; }
    /// Says that nothing more is sent, and throws away what has come. False when the client has closed.
    bool drain();

    int descriptor() const { return descriptor_; }

  protected:
    bool is_last_request() const { return last_request_; }
    /// Adds what is there to \a buffer, at most \a size bytes; complete where there was some.
    input receive(boost::beast::flat_buffer &buffer, std::size_t size);
    /// Sends \a texts, four at most, one after the other. False where the client is gone.
    bool send(std::initializer_list<std::string_view> texts);

  private:
    ssize_t receive(void *buffer, std::size_t size);
    bool wait_for_room();

    int descriptor_;
    connection_registry &registry_;
    int timeout_;
    bool last_request_ = false;
    bool body_abandoned_ = false;
    bool output_ended_ = false;
};

}  // namespace cppcms::impl

#pragma once

#include <booster/noncopyable.h>

#include <chrono>
#include <condition_variable>
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

/// A client of a front, with one request at a time. Used by one thread at a time. Every wait for the client
/// is bounded by the time limit of the front.
class connection : public booster::noncopyable {
  public:
    enum class head {
        complete,
        incomplete,  ///< the client has yet to send more
        closed,      ///< nothing more will come, or it is of no use
    };

    /// What is to happen to output.
    enum class chunk {
        more,   ///< may be kept back until more comes
        flush,  ///< has to leave
        last,   ///< ends the response
    };

    /// Owns the socket.
    connection(int descriptor, connection_registry &registry);
    virtual ~connection();

    /// Takes in what has come of the next request's head. Does not wait for the client.
    virtual head read_head(environment &variables) = 0;
    /// Waits for a piece of the body; 0 where nothing more comes.
    virtual std::size_t read(char *buffer, std::size_t size) = 0;
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
    /// A part of the body stays unread. The client may be busy sending it when the connection closes.
    void abandon_body();

    int descriptor() const { return descriptor_; }

  protected:
    bool is_last_request() const { return last_request_; }
    void set_timeouts(int seconds);
    /// Somebody else has closed the socket.
    void disown() { descriptor_ = -1; }

  private:
    void linger();

    int descriptor_;
    connection_registry &registry_;
    bool last_request_ = false;
    bool body_abandoned_ = false;
};

}  // namespace cppcms::impl

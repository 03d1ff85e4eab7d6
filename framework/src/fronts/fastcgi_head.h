#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cppcms::impl {

class environment;

/// Most bytes of CGI variables that a FastCGI request may bring.
constexpr std::size_t max_fastcgi_variables = 16384;
/// Most bytes in which they have to come, record headers included.
constexpr std::size_t max_fastcgi_head = 2 * max_fastcgi_variables;

/// What begins each FastCGI record.
struct fastcgi_record_header {
    static constexpr std::size_t size = 8;

    enum kind : unsigned {
        begin_request = 1,
        abort_request = 2,
        end_request = 3,
        params = 4,
        standard_input = 5,
        standard_output = 6,
        get_values = 9,
        get_values_result = 10,
        unknown_type = 11,
    };

    unsigned version;
    unsigned type;
    unsigned id;  ///< of the request; 0 where it is about the connection
    std::size_t length;
    std::size_t padding;

    /// Reads the first bytes of \a bytes, which has that many.
    static fastcgi_record_header read(std::string_view bytes);
};

/// The header of a record of ours, without padding.
std::string fastcgi_record(unsigned type, unsigned id, std::size_t length);

/// The records that begin a FastCGI request, up to the end of its variables.
class fastcgi_head {
  public:
    enum class state {
        complete,
        incomplete,
        too_large,
        malformed,
        unknown_role,  ///< the web server asks for something else than a response
    };

    /// Takes the whole records off the front of \a bytes, up to the end of the head. Not to be called again
    /// after another state than incomplete.
    state take(std::string_view &bytes);

    unsigned id() const { return id_; }
    bool keeps_connection() const { return keeps_connection_; }
    void copy_variables(environment &to) const;
    /// Answers to the web server's questions about us, each once.
    std::string take_replies();

  private:
    state take_record(fastcgi_record_header const &header, std::string_view content);
    state take_question(unsigned type, std::string_view content);

    bool begun_ = false;
    bool keeps_connection_ = false;
    unsigned id_ = 0;
    std::size_t taken_ = 0;
    std::string variables_;
    std::string replies_;
};

}  // namespace cppcms::impl

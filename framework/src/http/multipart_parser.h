#pragma once

#include <booster/noncopyable.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace cppcms::impl {

/// What the headers of a part of a form say.
struct part_header {
    std::string name;
    std::string filename;
    std::string content_type;  ///< media type in lower case, without parameters
    bool has_content_type = false;
};

/// Splits a multipart/form-data body into its parts. The body is fed in pieces of any size, nothing of it
/// but the headers of one part is kept.
class multipart_parser : public booster::noncopyable {
  public:
    /// Takes the parts. A false return ends the parsing.
    class consumer {
      public:
        virtual ~consumer() = default;
        virtual bool begin_part(part_header const &header) = 0;
        virtual bool part_data(std::string_view data) = 0;
        virtual bool end_part() = 0;
    };

    enum class result {
        more,       ///< all is well so far
        complete,   ///< the body has come to its end
        malformed,  ///< see problem()
        refused,    ///< by the consumer
    };

    /// Most bytes in the headers of one part.
    static constexpr std::size_t max_header_size = 8192;
    static constexpr std::size_t max_boundary_size = 200;

    /// A boundary that is empty, too long or not plain text makes every body malformed.
    multipart_parser(std::string_view boundary, consumer &parts);

    /// Takes the next piece. Nothing may be fed after a result other than `more`, except that any byte
    /// after `complete` makes the body malformed.
    result feed(std::string_view data);

    char const *problem() const { return problem_; }

  private:
    enum class state { first_boundary, boundary_line, headers, data, end };

    result step(std::string_view &data);
    result take_delimiter(std::string_view &data);
    result take_boundary_line(std::string_view &data);
    result take_data(std::string_view &data);
    std::size_t delimiter_start(std::string_view data) const;
    result take_headers(std::string_view &data);
    result fail(char const *problem);

    std::string delimiter_;  // CR LF -- boundary
    consumer &parts_;
    char const *problem_ = "";
    state state_ = state::first_boundary;
    std::size_t matched_ = 2;  // bytes of the delimiter seen; the first one comes without its CR LF
    std::string line_;         // what follows the boundary on its line
    std::string headers_;      // of the part that begins
};

/// Reads the header lines of a part, CR LF at the end of each. False where they are malformed.
bool parse_part_header(std::string_view lines, part_header &header);

}  // namespace cppcms::impl

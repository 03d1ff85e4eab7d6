#pragma once

#include <istream>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "parameters/Parameter.h"

/// The text form of parameters, one a line:
///
///     "net/hostname","field-box", s
///     "net/mtu","1500", i
///     "system/gain","0.5", f
///     "net/openvpn/client_ovpn","client\ndev tun\n", file 0600
///
/// Between the quotes \" \\ \n \r \t and \xHH (two hexadecimal digits) stand for the characters that
/// cannot be written as themselves. Empty lines and lines that begin with # are skipped.
namespace prm {

/// A line that cannot be read; the text says which and why.
class ParameterFileError : public std::runtime_error {
  public:
    ParameterFileError(int line, std::string const &reason)
        : std::runtime_error("line " + std::to_string(line) + ": " + reason), line_(line) {}

    int Line() const { return line_; }

  private:
    int line_;
};

/// The line of \a parameter, without line end.
std::string FormatLine(Parameter const &parameter);

/// Reads all lines of \a in, of which \a most may be parameters. Throws ParameterFileError.
std::vector<Parameter> ReadParameters(std::istream &in,
                                      std::size_t most = std::numeric_limits<std::size_t>::max());

}  // namespace prm

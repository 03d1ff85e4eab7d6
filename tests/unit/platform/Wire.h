#pragma once

#include <cstdint>
#include <string>

/// A datagram as the tables of a protocol describe it: values at their offsets, zeros elsewhere.
class Wire {
  public:
    explicit Wire(std::size_t size) : bytes_(size, '\0') {}

    Wire &Byte(std::size_t offset, std::uint8_t value) { return Put(offset, value, 1); }
    Wire &Word(std::size_t offset, std::uint16_t value) { return Put(offset, value, 2); }
    Wire &Long(std::size_t offset, std::uint32_t value) { return Put(offset, value, 4); }
    Wire &Text(std::size_t offset, std::string const &text) {
        bytes_.replace(offset, text.size(), text);
        return *this;
    }

    std::string const &bytes() const { return bytes_; }

  private:
    /// Little-endian, whatever this machine is.
    Wire &Put(std::size_t offset, std::uint32_t value, int size) {
        for (int index = 0; index < size; ++index)
            bytes_.at(offset + index) = static_cast<char>(value >> (8 * index));
        return *this;
    }

    std::string bytes_;
};

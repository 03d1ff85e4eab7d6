#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

/// A datagram as the tables of a protocol describe it: values at their offsets, zeros elsewhere.
class Wire {
  public:
    /// Little-endian, whatever this machine is.
    struct Number {
        std::size_t offset;
        std::uint32_t value;
        std::size_t size = 4;
    };
    struct Text {
        std::size_t offset;
        std::string text;
    };

    explicit Wire(std::size_t size, std::initializer_list<Number> numbers,
                  std::initializer_list<Text> texts = {})
        : bytes_(size, '\0') {
        for (auto const &[offset, value, width] : numbers) {
            for (std::size_t byte = 0; byte < width; ++byte)
                bytes_.at(offset + byte) = static_cast<char>(value >> (8 * byte));
        }
        for (auto const &[offset, text] : texts)
            bytes_.replace(offset, text.size(), text);
    }

    std::string const &bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

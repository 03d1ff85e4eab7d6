#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A datagram as the tables of a protocol describe it: values at their offsets, zeros elsewhere.
class Wire {
  public:
    /// Numbers one behind the other, little-endian, whatever this machine is.
    struct Numbers {
        std::size_t offset;
        std::vector<std::uint32_t> values;
        std::size_t size = 4;  // of each
    };
    struct Text {
        std::size_t offset;
        std::string text;
    };

    explicit Wire(std::size_t size, std::vector<Numbers> const &numbers, std::vector<Text> const &texts = {})
        : bytes_(size, '\0') {
        for (auto const &[offset, values, width] : numbers) {
            for (std::size_t byte = 0; byte < width * values.size(); ++byte)
                bytes_.at(offset + byte) = static_cast<char>(values[byte / width] >> (8 * (byte % width)));
        }
        for (auto const &[offset, text] : texts)
            bytes_.replace(offset, text.size(), text);
    }

    std::string const &bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

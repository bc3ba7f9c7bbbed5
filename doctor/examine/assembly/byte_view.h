// Numbers in the bytes of a file that may lie about its own layout.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace doctor {

/// Little-endian numbers at places of a text. Every function throws `std::out_of_range` beyond its end.
class ByteView {
 public:
  explicit ByteView(std::string_view bytes) : bytes_(bytes) {}

  std::uint32_t Number(std::size_t at, std::size_t size) const {
    std::uint32_t number = 0;
    for (std::size_t byte = 0; byte < size; ++byte) {
      number |= static_cast<std::uint32_t>(Byte(at + byte)) << (8 * byte);
    }
    return number;
  }

  std::uint8_t Byte(std::size_t at) const {
    if (at >= bytes_.size()) {
      throw std::out_of_range("beyond the end");
    }
    return static_cast<std::uint8_t>(bytes_[at]);
  }

  /// The text from there up to a NUL.
  std::string Text(std::size_t at) const {
    const std::string_view rest = Part(at, bytes_.size() - std::min(at, bytes_.size())).bytes_;
    return std::string(rest.substr(0, rest.find('\0')));
  }

  ByteView Part(std::size_t at, std::size_t size) const {
    if (at > bytes_.size() || size > bytes_.size() - at) {
      throw std::out_of_range("beyond the end");
    }
    return ByteView(bytes_.substr(at, size));
  }

  std::size_t Size() const { return bytes_.size(); }

 private:
  std::string_view bytes_;
};

/// A number and how many bytes it takes.
struct CompressedNumber {
  std::uint32_t value;
  std::size_t size;
};

/// Reads a number as metadata stores small ones (ECMA-335, partition II, 23.2): big-endian in one, two or four bytes,
/// which its first bits tell apart.
inline CompressedNumber ReadCompressed(const ByteView& bytes, std::size_t at) {
  const std::uint32_t first = bytes.Byte(at);
  if (first < 0x80) {
    return {first, 1};
  }
  if (first < 0xc0) {
    return {(first & 0x3fU) << 8 | bytes.Byte(at + 1), 2};
  }
  return {(first & 0x1fU) << 24 | std::uint32_t{bytes.Byte(at + 1)} << 16 | std::uint32_t{bytes.Byte(at + 2)} << 8 |
              bytes.Byte(at + 3),
          4};
}

}  // namespace doctor

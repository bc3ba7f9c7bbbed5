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

}  // namespace doctor

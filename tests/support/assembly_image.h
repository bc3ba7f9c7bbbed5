// The bytes of a managed assembly, as far as its headers go.
#pragma once

#include <cstdint>
#include <string>

namespace tests {

/// An assembly of 1024 bytes for any machine, whose one section begins in the middle. A test spoils what it wants.
struct AssemblyImage {
  AssemblyImage();

  /// Writes a little-endian number.
  AssemblyImage& Put16(std::size_t offset, std::uint16_t value);
  AssemblyImage& Put32(std::size_t offset, std::uint32_t value);

  static constexpr std::size_t kHeader = 0x80;  ///< "PE" and the file header behind it.
  static constexpr std::size_t kMachine = 0x84;
  static constexpr std::size_t kSectionCount = 0x86;
  static constexpr std::size_t kCliDirectory = 0x168;  ///< Address and size of the CLI header.
  static constexpr std::size_t kSection = 0x178;       ///< The one row of the section table.

  std::string bytes;
};

}  // namespace tests

#include "tests/support/assembly_image.h"

namespace tests {

AssemblyImage::AssemblyImage() : bytes(1024, '\0') {
  bytes.replace(0, 2, "MZ");
  Put32(0x3c, kHeader);
  bytes.replace(kHeader, 2, "PE");
  Put16(kMachine, 0x14c).Put16(kSectionCount, 1).Put16(kHeader + 20, 224);  // The optional header's size.
  Put16(kHeader + 24, 0x10b);
  Put32(kCliDirectory, 0x2008).Put32(kCliDirectory + 4, 72);
  bytes.replace(kSection, 5, ".text");
  Put32(kSection + 8, 512).Put32(kSection + 12, 0x2000).Put32(kSection + 16, 512).Put32(kSection + 20, 512);
}

AssemblyImage& AssemblyImage::Put16(std::size_t offset, std::uint16_t value) {
  bytes.at(offset) = static_cast<char>(value & 0xff);
  bytes.at(offset + 1) = static_cast<char>(value >> 8);
  return *this;
}

AssemblyImage& AssemblyImage::Put32(std::size_t offset, std::uint32_t value) {
  return Put16(offset, static_cast<std::uint16_t>(value & 0xffff))
      .Put16(offset + 2, static_cast<std::uint16_t>(value >> 16));
}

}  // namespace tests

#include "tests/support/managed_image.h"

#include "tests/support/assembly_image.h"

namespace tests {
namespace {

using namespace std::string_literals;

// All that the metadata names lies in the one section: its addresses begin with 0x2000, at offset 512 of the file.
constexpr std::size_t kSection = 512;
constexpr std::size_t kCli = kSection + 8;
constexpr std::size_t kRoot = kSection + 0x60;
constexpr std::size_t kLength = 340;
constexpr std::size_t kTables = 72;  // From here on: in the metadata.
constexpr std::size_t kTexts = 240;
constexpr std::size_t kBlobs = 280;
constexpr std::size_t kCode = kSection + 0x1b8;

void Put(std::string& bytes, std::size_t at, const std::string& what) {
  bytes.replace(at, what.size(), what);
}

std::string Two(std::uint64_t value) {
  return ManagedImage::Number(value, 2);
}

std::string Four(std::uint64_t value) {
  return ManagedImage::Number(value, 4);
}

std::string StreamHeaders() {
  return Four(kTables) + Four(kTexts - kTables) + "#~\0\0"s + Four(kTexts) + Four(kBlobs - kTexts) +
         "#Strings\0\0\0\0"s + Four(kBlobs) + Four(kLength - kBlobs) + "#Blob\0\0\0"s;
}

// One row of each table, but for two references.
std::string Tables(const ManagedImage& image) {
  constexpr std::uint64_t kPresent =
      1ULL << 0x01 | 1ULL << 0x06 | 1ULL << 0x0a | 1ULL << 0x1b | 1ULL << 0x20 | 1ULL << 0x23 | 1ULL << 0x2b;
  const std::string counts = Four(1) + Four(1) + Four(1) + Four(1) + Four(1) + Four(2) + Four(1);
  const std::string type = Two(image.scope) + Two(0) + Two(0);
  const std::string function = Four(0x2000 + kCode - kSection) + std::string(10, '\0');
  const std::string method = Two(1 << 3 | (image.type.empty() ? 1 : 4)) + Two(0) + Two(0);
  const std::string typeWithTypes = Two(1);
  const std::string assembly = std::string(18, '\0') + Two(1) + Two(0);
  const std::string needed = std::string(14, '\0') + Two(5) + Two(0) + Two(0);
  const std::string other = std::string(14, '\0') + Two(12) + Two(0) + Two(0);
  const std::string methodWithTypes = Two(1 << 1 | 1) + Two(0);
  return std::string(8, '\0') + ManagedImage::Number(kPresent, 8) + std::string(8, '\0') + counts + type + function +
         method + typeWithTypes + assembly + needed + other + methodWithTypes;
}

std::string Body(const ManagedImage& image) {
  const std::size_t size = image.code.size();
  return (image.has_fat_header ? Two(0x3003) + Two(8) + Four(size) + Four(0) : ManagedImage::Number(size << 2 | 2, 1)) +
         image.code;
}

// The optional header of 64 bits is longer, so that what lies behind its first fields moves.
void Widen(std::string& bytes) {
  using Header = AssemblyImage;
  constexpr std::size_t kMore = 16;
  Put(bytes, Header::kHeader + 20, Two(224 + kMore));
  Put(bytes, Header::kHeader + 24, Two(0x20b));
  Put(bytes, Header::kSection + kMore, bytes.substr(Header::kSection, 40));
  Put(bytes, Header::kCliDirectory + kMore, bytes.substr(Header::kCliDirectory, 8));
  Put(bytes, Header::kCliDirectory, std::string(8, '\0'));
}

}  // namespace

std::string ManagedImage::Call(std::uint32_t function) {
  return "\x28" + Four(function);
}

std::string ManagedImage::Number(std::uint64_t value, std::size_t size) {
  std::string bytes;
  for (std::size_t byte = 0; byte < size; ++byte) {
    bytes += static_cast<char>(value >> (8 * byte) & 0xff);
  }
  return bytes;
}

std::string ManagedImage::Bytes() const {
  std::string bytes = AssemblyImage().bytes;
  Put(bytes, kCli + 8, Four(0x2000 + kRoot - kSection) + Four(kLength));
  Put(bytes, kCli + 20, Four(entry_point));
  Put(bytes, kRoot, "BSJB" + std::string(8, '\0') + Four(4) + Four(0) + Two(0) + Two(3) + StreamHeaders());
  Put(bytes, kRoot + kTables, Tables(*this));
  Put(bytes, kRoot + kTexts, "\0app\0Needed\0Other\0"s);
  Put(bytes, kRoot + kBlobs, "\0"s + Number(type.size(), 1) + type);
  Put(bytes, kCode, Body(*this));
  if (has_wide_addresses) {
    Widen(bytes);
  }
  return bytes;
}

}  // namespace tests

// An assembly of any bytes: the verdict is that of a plain reading of its headers, and nothing is read beyond its end.
#include "doctor/examine/assembly/pe_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "fuzz/support.h"

using doctor::PeVerdict;

namespace {

// The bytes of a file; numbers in it are little-endian.
class Image {
 public:
  explicit Image(std::string_view bytes) : bytes_(bytes) {}

  bool Holds(std::uint64_t offset, std::uint64_t count) const { return offset + count <= bytes_.size(); }
  std::uint64_t Size() const { return bytes_.size(); }
  std::uint64_t Number(std::uint64_t offset, std::size_t width) const {
    std::uint64_t number = 0;
    for (std::size_t i = width; i > 0; --i) {
      number = number * 256 + static_cast<unsigned char>(bytes_[offset + i - 1]);
    }
    return number;
  }

 private:
  std::string_view bytes_;
};

// Of the headers behind the DOS header, at `pe`.
PeVerdict VerdictOfSections(const Image& image, std::uint64_t table, std::uint64_t count, std::uint64_t cli) {
  std::uint64_t end = 0;
  bool hasCli = false;
  for (std::uint64_t section = table; section < table + count * 40; section += 40) {
    const std::uint64_t address = image.Number(section + 12, 4);
    const std::uint64_t size = image.Number(section + 16, 4);
    end = std::max(end, image.Number(section + 20, 4) + size);
    hasCli = hasCli || (cli >= address && cli < address + size);
  }
  return end > image.Size() ? PeVerdict::kCutShort : hasCli ? PeVerdict::kSound : PeVerdict::kNotManaged;
}

// The address of the CLI header, which is the fifteenth entry of the optional header's directory; 0 without one.
std::uint64_t CliAddress(const Image& image, std::uint64_t optionalHeader, std::uint64_t size) {
  if (!image.Holds(optionalHeader, 2)) {
    return 0;
  }
  const std::uint64_t entry = (image.Number(optionalHeader, 2) == 0x20b ? 112 : 96) + 14 * 8;
  return entry + 8 <= size && image.Holds(optionalHeader + entry, 8) ? image.Number(optionalHeader + entry, 4) : 0;
}

PeVerdict Verdict(const Image& image) {
  if (!image.Holds(0, 2) || image.Number(0, 2) != 0x5a4d) {
    return PeVerdict::kNotManaged;
  }
  const std::uint64_t pe = image.Holds(0x3c, 4) ? image.Number(0x3c, 4) : UINT32_MAX;
  if (!image.Holds(pe, 24)) {
    return PeVerdict::kCutShort;
  }
  const std::uint64_t machine = image.Number(pe + 4, 2);
  const std::uint64_t sections = image.Number(pe + 6, 2);
  const std::uint64_t optionalSize = image.Number(pe + 20, 2);
  if (image.Number(pe, 4) != 0x4550 || sections > 96) {
    return PeVerdict::kNotManaged;
  }
  if (machine != 0x14c && machine != 0x8664 && machine != 0xfd1d) {
    return PeVerdict::kOtherMachine;
  }
  if (sections > 0 && !image.Holds(pe + 24 + optionalSize, sections * 40)) {
    return PeVerdict::kCutShort;
  }
  const std::uint64_t cli = CliAddress(image, pe + 24, optionalSize);
  return cli == 0 ? PeVerdict::kNotManaged : VerdictOfSections(image, pe + 24 + optionalSize, sections, cli);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  file.Write(AsText(data, size));

  const doctor::PeFinding finding = doctor::CheckPe(file.Path().c_str());

  Require(finding.verdict == Verdict(Image(AsText(data, size))));
  Require((finding.verdict == PeVerdict::kSound) == finding.detail.empty());
  return 0;
}

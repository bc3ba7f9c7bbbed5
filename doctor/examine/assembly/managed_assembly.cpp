#include "doctor/examine/assembly/managed_assembly.h"

#include <filesystem>
#include <fstream>

#include "doctor/examine/assembly/byte_view.h"
#include "doctor/examine/assembly/code.h"
#include "doctor/examine/assembly/first_needs.h"
#include "doctor/examine/assembly/metadata_tables.h"

namespace doctor {
namespace {

// The column of the name.
constexpr std::size_t kAssemblyRefName = 6;
constexpr std::size_t kLargest = std::size_t{64} * 1024 * 1024;

// An image on disk: its addresses are those that it would have in memory.
class Image {
 public:
  explicit Image(const ByteView& bytes) : bytes_(bytes) {
    const std::size_t header = bytes.Number(0x3c, 4);
    sections_ = bytes.Number(header + 6, 2);
    table_ = header + 24 + bytes.Number(header + 20, 2);
    const std::size_t directories = header + 24 + (bytes.Number(header + 24, 2) == 0x20b ? 112 : 96);
    cli_ = At(bytes.Number(directories + std::size_t{14} * 8, 4));
  }

  ByteView Metadata() const { return bytes_.Part(At(bytes_.Number(cli_ + 8, 4)), bytes_.Number(cli_ + 12, 4)); }
  std::uint32_t EntryPoint() const { return bytes_.Number(cli_ + 20, 4); }

  FunctionBody Body(std::uint32_t address) const { return ReadBody(bytes_, At(address)); }

 private:
  std::size_t At(std::uint32_t address) const {
    for (std::size_t row = table_; row < table_ + sections_ * 40; row += 40) {
      const std::uint32_t begin = bytes_.Number(row + 12, 4);
      if (address >= begin && address - begin < bytes_.Number(row + 16, 4)) {
        return bytes_.Number(row + 20, 4) + (address - begin);
      }
    }
    throw std::out_of_range("in no section");
  }

  ByteView bytes_;
  std::size_t sections_ = 0;
  std::size_t table_ = 0;
  std::size_t cli_ = 0;
};

ManagedAssembly Read(const ByteView& bytes) {
  const Image image(bytes);
  const MetadataTables tables(image.Metadata());
  constexpr std::size_t kAssemblyName = 7;
  ManagedAssembly assembly{tables.Text(MetadataTable::kAssembly, 1, kAssemblyName)};
  for (std::uint32_t row = 1; row <= tables.Count(MetadataTable::kAssemblyRef); ++row) {
    assembly.references.push_back(tables.Text(MetadataTable::kAssemblyRef, row, kAssemblyRefName));
  }
  const std::uint32_t entry = image.EntryPoint();
  assembly.has_entry_point = entry != 0;
  if (entry >> 24 == static_cast<std::uint32_t>(MetadataTable::kMethodDef)) {
    assembly.first_needed = FirstNeeds(
        tables, [&](std::uint32_t address) { return image.Body(address); }, entry & 0xffffffU);
  }
  return assembly;
}

}  // namespace

std::optional<ManagedAssembly> ReadManagedAssembly(const std::string& path) {
  // Whoever opens a fifo waits for a writer, for ever if none comes.
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) {
    return std::nullopt;
  }
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const auto size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
  if (size <= 0 || static_cast<std::size_t>(size) > kLargest) {
    return std::nullopt;
  }
  std::string bytes(static_cast<std::size_t>(size), '\0');
  file.seekg(0);
  if (!file.read(bytes.data(), size)) {
    return std::nullopt;
  }
  try {
    return Read(ByteView(bytes));
  } catch (const std::out_of_range&) {
    return std::nullopt;
  }
}

}  // namespace doctor

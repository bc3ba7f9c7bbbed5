#include "doctor/examine/managed_assembly.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "doctor/examine/metadata_tables.h"

namespace doctor {
namespace {

// The column of the name.
constexpr std::size_t kAssemblyRefName = 6;
constexpr std::size_t kLargest = std::size_t{64} * 1024 * 1024;

// Opcodes of one byte, and those behind the byte 0xfe, by what follows them. What no range names is followed by
// nothing.
enum class Operand { kNone, kOne, kTwo, kFour, kEight, kToken, kSwitch };

struct OpcodeRange {
  std::uint16_t first;
  std::uint16_t last;
  Operand operand;
};

constexpr auto kOpcodes = std::to_array<OpcodeRange>({
    {0x0e, 0x13, Operand::kOne},       {0x1f, 0x1f, Operand::kOne},     {0x20, 0x20, Operand::kFour},
    {0x21, 0x21, Operand::kEight},     {0x22, 0x22, Operand::kFour},    {0x23, 0x23, Operand::kEight},
    {0x27, 0x28, Operand::kToken},     {0x29, 0x29, Operand::kFour},    {0x2b, 0x37, Operand::kOne},
    {0x38, 0x44, Operand::kFour},      {0x45, 0x45, Operand::kSwitch},  {0x6f, 0x71, Operand::kToken},
    {0x72, 0x72, Operand::kFour},      {0x73, 0x75, Operand::kToken},   {0x79, 0x79, Operand::kToken},
    {0x7b, 0x81, Operand::kToken},     {0x8c, 0x8d, Operand::kToken},   {0x8f, 0x8f, Operand::kToken},
    {0xa3, 0xa5, Operand::kToken},     {0xc2, 0xc2, Operand::kToken},   {0xc6, 0xc6, Operand::kToken},
    {0xd0, 0xd0, Operand::kToken},     {0xdd, 0xdd, Operand::kFour},    {0xde, 0xde, Operand::kOne},
    {0xfe06, 0xfe07, Operand::kToken}, {0xfe09, 0xfe0e, Operand::kTwo}, {0xfe12, 0xfe12, Operand::kOne},
    {0xfe15, 0xfe16, Operand::kToken}, {0xfe19, 0xfe19, Operand::kOne}, {0xfe1c, 0xfe1c, Operand::kToken},
});

Operand OperandOf(std::uint16_t opcode) {
  const auto* found = std::ranges::find_if(
      kOpcodes, [&](const OpcodeRange& range) { return opcode >= range.first && opcode <= range.last; });
  return found != kOpcodes.end() ? found->operand : Operand::kNone;
}

std::size_t SizeOf(Operand operand, const ByteView& code, std::size_t at) {
  switch (operand) {
    case Operand::kNone:
      return 0;
    case Operand::kOne:
      return 1;
    case Operand::kTwo:
      return 2;
    case Operand::kFour:
    case Operand::kToken:
      return 4;
    case Operand::kEight:
      return 8;
    case Operand::kSwitch:
      break;
  }
  return 4 + std::size_t{4} * code.Number(at, 4);
}

// The numbers of the rows that the code names.
std::vector<std::uint32_t> TokensOf(const ByteView& code) {
  std::vector<std::uint32_t> tokens;
  for (std::size_t at = 0; at < code.Size();) {
    std::uint16_t opcode = code.Byte(at++);
    if (opcode == 0xfe) {
      opcode = static_cast<std::uint16_t>(0xfe00U | code.Byte(at++));
    }
    const Operand operand = OperandOf(opcode);
    if (operand == Operand::kToken) {
      tokens.push_back(code.Number(at, 4));
    }
    at += SizeOf(operand, code, at);
  }
  return tokens;
}

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

  // The code of the function whose body is at the address.
  ByteView Code(std::uint32_t address) const {
    const std::size_t at = At(address);
    const std::uint8_t head = bytes_.Byte(at);
    constexpr std::uint8_t kTiny = 2;
    return (head & 3U) == kTiny
               ? bytes_.Part(at + 1, head >> 2)
               : bytes_.Part(at + std::size_t{4} * (bytes_.Byte(at + 1) >> 4), bytes_.Number(at + 4, 4));
  }

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

// Follows a row to the assembly that it lies in.
class References {
 public:
  explicit References(const MetadataTables& tables) : tables_(tables) {}

  // Empty where it lies in this assembly.
  std::string AssemblyOf(MetadataRow row) const {
    for (int step = 0; step < kMostSteps && row.row != 0; ++step) {
      if (row.IsIn(MetadataTable::kAssemblyRef)) {
        return tables_.Text(MetadataTable::kAssemblyRef, row.row, kAssemblyRefName);
      }
      row = Next(row);
    }
    return {};
  }

 private:
  static constexpr int kMostSteps = 16;

  MetadataRow Next(const MetadataRow& row) const {
    for (const MetadataTable table : {MetadataTable::kMethodSpec, MetadataTable::kMemberRef, MetadataTable::kTypeRef}) {
      if (row.IsIn(table)) {
        return tables_.Named(table, row.row, 0);
      }
    }
    return row.IsIn(MetadataTable::kTypeSpec) ? InTypeSpec(row.row) : MetadataRow{0, 0};
  }

  // The type that is made a generic one, or an array, a pointer, a reference of.
  MetadataRow InTypeSpec(std::uint32_t row) const {
    const ByteView blob = tables_.Blob(MetadataTable::kTypeSpec, row, 0);
    constexpr auto kAround = std::to_array<std::uint8_t>({0x0f, 0x10, 0x14, 0x15, 0x1d, 0x45});
    constexpr std::uint8_t kValueType = 0x11;
    constexpr std::uint8_t kClass = 0x12;
    std::size_t at = 0;
    while (std::ranges::find(kAround, blob.Byte(at)) != kAround.end()) {
      ++at;
    }
    const bool isNamed = blob.Byte(at) == kValueType || blob.Byte(at) == kClass;
    return isNamed ? MetadataTables::TypeOf(Compressed(blob, at + 1)) : MetadataRow{0, 0};
  }

  static std::uint32_t Compressed(const ByteView& blob, std::size_t at) {
    const std::uint32_t first = blob.Byte(at);
    if (first < 0x80) {
      return first;
    }
    if (first < 0xc0) {
      return (first & 0x3fU) << 8 | blob.Byte(at + 1);
    }
    return (first & 0x1fU) << 24 | std::uint32_t{blob.Byte(at + 1)} << 16 | std::uint32_t{blob.Byte(at + 2)} << 8 |
           blob.Byte(at + 3);
  }

  const MetadataTables& tables_;
};

std::vector<std::string> FirstNeeded(const Image& image, const MetadataTables& tables, std::uint32_t method) {
  std::vector<std::string> needed;
  const References references(tables);
  for (const std::uint32_t token : TokensOf(image.Code(tables.Value(MetadataTable::kMethodDef, method, 0)))) {
    const std::string name = references.AssemblyOf({token >> 24, token & 0xffffffU});
    if (!name.empty() && std::ranges::find(needed, name) == needed.end()) {
      needed.push_back(name);
    }
  }
  return needed;
}

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
    assembly.first_needed = FirstNeeded(image, tables, entry & 0xffffffU);
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

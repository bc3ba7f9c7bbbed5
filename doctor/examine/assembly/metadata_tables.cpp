#include "doctor/examine/assembly/metadata_tables.h"

#include <algorithm>
#include <span>

namespace doctor {
namespace {

constexpr std::uint32_t kSignature = 0x424a5342;

// Kinds of columns: numbers of two and four bytes, places in the three heaps, rows of one table, rows of several.
constexpr std::uint8_t kTwo = 0;
constexpr std::uint8_t kFour = 1;
constexpr std::uint8_t kText = 2;
constexpr std::uint8_t kGuid = 3;
constexpr std::uint8_t kBlob = 4;
constexpr std::uint8_t kRow = 0x40;
constexpr std::uint8_t kCoded = 0x80;

constexpr std::uint8_t RowOfTable(std::uint8_t table) {
  return static_cast<std::uint8_t>(kRow | table);
}

constexpr std::uint8_t kNoTable = 0xff;

// The tables that a column may name rows of, by the number in its lowest bits.
struct Coding {
  unsigned int bits;
  std::array<std::uint8_t, 22> tables;
  std::size_t size;
};

constexpr auto kCodings = std::to_array<Coding>({
    {2, {0x02, 0x01, 0x1b}, 3},
    {2, {0x04, 0x08, 0x17}, 3},
    {5,
     {0x06, 0x04, 0x01, 0x02, 0x08, 0x09, 0x0a, 0x00, 0x0e, 0x17, 0x14,
      0x11, 0x1a, 0x1b, 0x20, 0x23, 0x26, 0x27, 0x28, 0x2a, 0x2c, 0x2b},
     22},
    {1, {0x04, 0x08}, 2},
    {2, {0x02, 0x06, 0x20}, 3},
    {3, {0x02, 0x01, 0x1a, 0x06, 0x1b}, 5},
    {1, {0x14, 0x17}, 2},
    {1, {0x06, 0x0a}, 2},
    {1, {0x04, 0x06}, 2},
    {2, {0x26, 0x23, 0x27}, 3},
    {3, {kNoTable, kNoTable, 0x06, 0x0a, kNoTable}, 5},
    {2, {0x00, 0x1a, 0x23, 0x01}, 4},
    {1, {0x02, 0x06}, 2},
});

constexpr std::uint8_t kTypeDefOrRef = kCoded | 0;
constexpr std::uint8_t kHasConstant = kCoded | 1;
constexpr std::uint8_t kHasCustomAttribute = kCoded | 2;
constexpr std::uint8_t kHasFieldMarshal = kCoded | 3;
constexpr std::uint8_t kHasDeclSecurity = kCoded | 4;
constexpr std::uint8_t kMemberRefParent = kCoded | 5;
constexpr std::uint8_t kHasSemantics = kCoded | 6;
constexpr std::uint8_t kMethodDefOrRef = kCoded | 7;
constexpr std::uint8_t kMemberForwarded = kCoded | 8;
constexpr std::uint8_t kImplementation = kCoded | 9;
constexpr std::uint8_t kCustomAttributeType = kCoded | 10;
constexpr std::uint8_t kResolutionScope = kCoded | 11;
constexpr std::uint8_t kTypeOrMethodDef = kCoded | 12;

struct Columns {
  std::array<std::uint8_t, 9> kinds;
  std::size_t size;
};

// The columns of each table, in the order of the tables' numbers (ECMA-335, partition II, 22).
constexpr auto kColumns = std::to_array<Columns>({
    {{kTwo, kText, kGuid, kGuid, kGuid}, 5},                                        // Module
    {{kResolutionScope, kText, kText}, 3},                                          // TypeRef
    {{kFour, kText, kText, kTypeDefOrRef, RowOfTable(0x04), RowOfTable(0x06)}, 6},  // TypeDef
    {{RowOfTable(0x04)}, 1},                                                        // FieldPtr
    {{kTwo, kText, kBlob}, 3},                                                      // Field
    {{RowOfTable(0x06)}, 1},                                                        // MethodPtr
    {{kFour, kTwo, kTwo, kText, kBlob, RowOfTable(0x08)}, 6},                       // MethodDef
    {{RowOfTable(0x08)}, 1},                                                        // ParamPtr
    {{kTwo, kTwo, kText}, 3},                                                       // Param
    {{RowOfTable(0x02), kTypeDefOrRef}, 2},                                         // InterfaceImpl
    {{kMemberRefParent, kText, kBlob}, 3},                                          // MemberRef
    {{kTwo, kHasConstant, kBlob}, 3},                                               // Constant
    {{kHasCustomAttribute, kCustomAttributeType, kBlob}, 3},                        // CustomAttribute
    {{kHasFieldMarshal, kBlob}, 2},                                                 // FieldMarshal
    {{kTwo, kHasDeclSecurity, kBlob}, 3},                                           // DeclSecurity
    {{kTwo, kFour, RowOfTable(0x02)}, 3},                                           // ClassLayout
    {{kFour, RowOfTable(0x04)}, 2},                                                 // FieldLayout
    {{kBlob}, 1},                                                                   // StandAloneSig
    {{RowOfTable(0x02), RowOfTable(0x14)}, 2},                                      // EventMap
    {{RowOfTable(0x14)}, 1},                                                        // EventPtr
    {{kTwo, kText, kTypeDefOrRef}, 3},                                              // Event
    {{RowOfTable(0x02), RowOfTable(0x17)}, 2},                                      // PropertyMap
    {{RowOfTable(0x17)}, 1},                                                        // PropertyPtr
    {{kTwo, kText, kBlob}, 3},                                                      // Property
    {{kTwo, RowOfTable(0x06), kHasSemantics}, 3},                                   // MethodSemantics
    {{RowOfTable(0x02), kMethodDefOrRef, kMethodDefOrRef}, 3},                      // MethodImpl
    {{kText}, 1},                                                                   // ModuleRef
    {{kBlob}, 1},                                                                   // TypeSpec
    {{kTwo, kMemberForwarded, kText, RowOfTable(0x1a)}, 4},                         // ImplMap
    {{kFour, RowOfTable(0x04)}, 2},                                                 // FieldRVA
    {{kFour, kFour}, 2},                                                            // EncLog
    {{kFour}, 1},                                                                   // EncMap
    {{kFour, kTwo, kTwo, kTwo, kTwo, kFour, kBlob, kText, kText}, 9},               // Assembly
    {{kFour}, 1},                                                                   // AssemblyProcessor
    {{kFour, kFour, kFour}, 3},                                                     // AssemblyOS
    {{kTwo, kTwo, kTwo, kTwo, kFour, kBlob, kText, kText, kBlob}, 9},               // AssemblyRef
    {{kFour, RowOfTable(0x23)}, 2},                                                 // AssemblyRefProcessor
    {{kFour, kFour, kFour, RowOfTable(0x23)}, 4},                                   // AssemblyRefOS
    {{kFour, kText, kBlob}, 3},                                                     // File
    {{kFour, kFour, kText, kText, kImplementation}, 5},                             // ExportedType
    {{kFour, kFour, kText, kImplementation}, 4},                                    // ManifestResource
    {{RowOfTable(0x02), RowOfTable(0x02)}, 2},                                      // NestedClass
    {{kTwo, kTwo, kTypeOrMethodDef, kText}, 4},                                     // GenericParam
    {{kMethodDefOrRef, kBlob}, 2},                                                  // MethodSpec
    {{RowOfTable(0x2a), kTypeDefOrRef}, 2},                                         // GenericParamConstraint
});
static_assert(kColumns.size() == 0x2d);

MetadataRow Decoded(const Coding& coding, std::uint32_t value) {
  const std::uint32_t tag = value & ((1U << coding.bits) - 1);
  return {tag < coding.size ? coding.tables.at(tag) : kNoTable, value >> coding.bits};
}

}  // namespace

MetadataTables::MetadataTables(const ByteView& root) {
  if (root.Number(0, 4) != kSignature) {
    throw std::out_of_range("no metadata");
  }
  ReadStreams(root);
  ReadCounts();
}

void MetadataTables::ReadStreams(const ByteView& root) {
  std::size_t at = 16 + root.Number(12, 4);
  const std::uint32_t count = root.Number(at + 2, 2);
  at += 4;
  for (std::uint32_t stream = 0; stream < count; ++stream) {
    const ByteView part = root.Part(root.Number(at, 4), root.Number(at + 4, 4));
    const std::string name = root.Text(at + 8);
    if (name == "#~") {
      tables_ = part;
    } else if (name == "#Strings") {
      texts_ = part;
    } else if (name == "#Blob") {
      blobs_ = part;
    }
    at += 8 + (name.size() / 4 + 1) * 4;
  }
}

void MetadataTables::ReadCounts() {
  heap_sizes_ = tables_.Byte(6);
  const std::uint64_t present = tables_.Number(8, 4) | std::uint64_t{tables_.Number(12, 4)} << 32;
  std::size_t at = 24;
  for (std::size_t table = 0; table < 64; ++table) {
    if ((present >> table & 1) != 0) {
      counts_.at(table) = tables_.Number(at, 4);
      at += 4;
    }
  }
  for (std::size_t table = 0; table < kTables; ++table) {
    begins_.at(table) = at;
    at += RowSize(table) * counts_.at(table);
  }
}

std::size_t MetadataTables::SizeOf(std::uint8_t column) const {
  if (column <= kFour) {
    return column == kTwo ? 2 : 4;
  }
  if (column <= kBlob) {
    return (heap_sizes_ >> (column - kText) & 1) != 0 ? 4 : 2;
  }
  if ((column & kCoded) == 0) {
    return counts_.at(column & 0x3f) > 0xffff ? 4 : 2;
  }
  const Coding& coding = kCodings.at(column & 0x3f);
  std::uint32_t most = 0;
  for (const std::uint8_t table : std::span(coding.tables).first(coding.size)) {
    most = table != kNoTable ? std::max(most, counts_.at(table)) : most;
  }
  return most >= 1U << (16 - coding.bits) ? 4 : 2;
}

std::size_t MetadataTables::RowSize(std::size_t table) const {
  std::size_t size = 0;
  for (std::size_t column = 0; column < kColumns.at(table).size; ++column) {
    size += SizeOf(kColumns.at(table).kinds.at(column));
  }
  return size;
}

std::uint32_t MetadataTables::Value(MetadataTable table, std::uint32_t row, std::size_t column) const {
  const auto number = static_cast<std::size_t>(table);
  if (row == 0 || row > counts_.at(number)) {
    throw std::out_of_range("no such row");
  }
  const Columns& columns = kColumns.at(number);
  std::size_t at = begins_.at(number) + RowSize(number) * (row - 1);
  for (std::size_t before = 0; before < column; ++before) {
    at += SizeOf(columns.kinds.at(before));
  }
  return tables_.Number(at, SizeOf(columns.kinds.at(column)));
}

std::string MetadataTables::Text(MetadataTable table, std::uint32_t row, std::size_t column) const {
  return texts_.Text(Value(table, row, column));
}

ByteView MetadataTables::Blob(MetadataTable table, std::uint32_t row, std::size_t column) const {
  const std::size_t at = Value(table, row, column);
  const CompressedNumber length = ReadCompressed(blobs_, at);
  return blobs_.Part(at + length.size, length.value);
}

MetadataRow MetadataTables::Named(MetadataTable table, std::uint32_t row, std::size_t column) const {
  const std::uint8_t kind = kColumns.at(static_cast<std::size_t>(table)).kinds.at(column);
  return Decoded(kCodings.at(kind & 0x3f), Value(table, row, column));
}

MetadataRow MetadataTables::TypeOf(std::uint32_t coded) {
  return Decoded(kCodings.front(), coded);
}

}  // namespace doctor

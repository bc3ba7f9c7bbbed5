#include "doctor/examine/assembly/metadata_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace doctor {
namespace {

// A column: a number of "2" or "4" bytes, a place in the heap of "s"trings, "g"uids or "b"lobs, the number of a table
// whose rows it names, or one of the words below.
using Column = std::string_view;

// By what a column tells the tables apart that it may name rows of: the tables in the order of their tags. No table has
// the number 0xff.
struct CodedColumn {
  unsigned int bits;
  std::vector<std::uint32_t> tables;
};

const std::map<Column, CodedColumn> kCodedColumns = {
    {"TypeDefOrRef", {2, {0x02, 0x01, 0x1b}}},
    {"HasConstant", {2, {0x04, 0x08, 0x17}}},
    {"HasCustomAttribute", {5, {0x06, 0x04, 0x01, 0x02, 0x08, 0x09, 0x0a, 0x00, 0x0e, 0x17, 0x14,
                                0x11, 0x1a, 0x1b, 0x20, 0x23, 0x26, 0x27, 0x28, 0x2a, 0x2c, 0x2b}}},
    {"HasFieldMarshal", {1, {0x04, 0x08}}},
    {"HasDeclSecurity", {2, {0x02, 0x06, 0x20}}},
    {"MemberRefParent", {3, {0x02, 0x01, 0x1a, 0x06, 0x1b}}},
    {"HasSemantics", {1, {0x14, 0x17}}},
    {"MethodDefOrRef", {1, {0x06, 0x0a}}},
    {"MemberForwarded", {1, {0x04, 0x06}}},
    {"Implementation", {2, {0x26, 0x23, 0x27}}},
    {"CustomAttributeType", {3, {0xff, 0xff, 0x06, 0x0a, 0xff}}},
    {"ResolutionScope", {2, {0x00, 0x1a, 0x23, 0x01}}},
    {"TypeOrMethodDef", {1, {0x02, 0x06}}},
};

// ECMA-335, partition II, 22. What it leaves out are the tables of unfinished assemblies.
const std::vector<std::vector<Column>> kTables = {
    {"2", "s", "g", "g", "g"},                           // Module
    {"ResolutionScope", "s", "s"},                       // TypeRef
    {"4", "s", "s", "TypeDefOrRef", "04", "06"},         // TypeDef
    {"04"},                                              // FieldPtr
    {"2", "s", "b"},                                     // Field
    {"06"},                                              // MethodPtr
    {"4", "2", "2", "s", "b", "08"},                     // MethodDef
    {"08"},                                              // ParamPtr
    {"2", "2", "s"},                                     // Param
    {"02", "TypeDefOrRef"},                              // InterfaceImpl
    {"MemberRefParent", "s", "b"},                       // MemberRef
    {"2", "HasConstant", "b"},                           // Constant
    {"HasCustomAttribute", "CustomAttributeType", "b"},  // CustomAttribute
    {"HasFieldMarshal", "b"},                            // FieldMarshal
    {"2", "HasDeclSecurity", "b"},                       // DeclSecurity
    {"2", "4", "02"},                                    // ClassLayout
    {"4", "04"},                                         // FieldLayout
    {"b"},                                               // StandAloneSig
    {"02", "14"},                                        // EventMap
    {"14"},                                              // EventPtr
    {"2", "s", "TypeDefOrRef"},                          // Event
    {"02", "17"},                                        // PropertyMap
    {"17"},                                              // PropertyPtr
    {"2", "s", "b"},                                     // Property
    {"2", "06", "HasSemantics"},                         // MethodSemantics
    {"02", "MethodDefOrRef", "MethodDefOrRef"},          // MethodImpl
    {"s"},                                               // ModuleRef
    {"b"},                                               // TypeSpec
    {"2", "MemberForwarded", "s", "1a"},                 // ImplMap
    {"4", "04"},                                         // FieldRVA
    {"4", "4"},                                          // EncLog
    {"4"},                                               // EncMap
    {"4", "2", "2", "2", "2", "4", "b", "s", "s"},       // Assembly
    {"4"},                                               // AssemblyProcessor
    {"4", "4", "4"},                                     // AssemblyOS
    {"2", "2", "2", "2", "4", "b", "s", "s", "b"},       // AssemblyRef
    {"4", "23"},                                         // AssemblyRefProcessor
    {"4", "4", "4", "23"},                               // AssemblyRefOS
    {"4", "s", "b"},                                     // File
    {"4", "4", "s", "s", "Implementation"},              // ExportedType
    {"4", "4", "s", "Implementation"},                   // ManifestResource
    {"02", "02"},                                        // NestedClass
    {"2", "2", "TypeOrMethodDef", "s"},                  // GenericParam
    {"MethodDefOrRef", "b"},                             // MethodSpec
    {"2a", "TypeDefOrRef"},                              // GenericParamConstraint
};

// Two rows of every table, with some more of one; each pair of bytes is its own place in the stream, in pairs.
class World {
 public:
  World() : bytes_(kStream + kLongest, '\0') {
    bytes_.replace(0, 4, "BSJB");
    Put(12, 4, 4);
    Put(22, 1, 2);
    Put(24, kStream, 4);
    Put(28, kLongest, 4);
    bytes_.replace(32, 2, "#~");
    for (std::size_t at = 0; at < kLongest; at += 2) {
      Put(kStream + at, at / 2, 2);
    }
    for (std::size_t at = 6; at < kRows; ++at) {
      Put(kStream + at, 0, 1);
    }
    Put(kStream + 8, (1ULL << kTables.size()) - 1, 8);
    for (std::size_t table = 0; table < kTables.size(); ++table) {
      Has(table, 2);
    }
  }

  void Has(std::size_t table, std::uint32_t rows) {
    counts_[table] = rows;
    Put(kStream + 24 + 4 * table, rows, 4);
  }
  void HasLargeHeaps(std::uint8_t which) {
    large_heaps_ = which;
    Put(kStream + 6, which, 1);
  }
  void Put(std::size_t at, std::uint64_t value, std::size_t size) {
    for (std::size_t byte = 0; byte < size; ++byte) {
      bytes_.at(at + byte) = static_cast<char>(value >> (8 * byte) & 0xff);
    }
  }

  std::size_t SizeOf(Column column) const {
    constexpr std::string_view kHeaps = "sgb";
    if (column == "2" || column == "4") {
      return column == "2" ? 2 : 4;
    }
    if (column.size() == 1) {
      return (large_heaps_ >> kHeaps.find(column) & 1) != 0 ? 4 : 2;
    }
    const auto coded = kCodedColumns.find(column);
    if (coded == kCodedColumns.end()) {
      return counts_.at(std::stoul(std::string(column), nullptr, 16)) >= 65536 ? 4 : 2;
    }
    return std::ranges::any_of(
               coded->second.tables,
               [&](std::uint32_t table) { return table != 0xff && counts_.at(table) >= 65536U >> coded->second.bits; })
               ? 4
               : 2;
  }
  std::size_t RowSize(std::size_t table) const {
    std::size_t size = 0;
    for (const Column column : kTables[table]) {
      size += SizeOf(column);
    }
    return size;
  }
  MetadataTables Read() const { return MetadataTables(ByteView(bytes_)); }

  static constexpr std::size_t kStream = 40;
  static constexpr std::size_t kRows = 24 + 4 * 0x2d;  // Where they begin in the stream.

 private:
  static constexpr std::size_t kLongest = std::size_t{3} << 20;

  std::string bytes_;
  std::map<std::size_t, std::uint32_t> counts_;
  std::uint8_t large_heaps_ = 0;
};

// Reads each column of the first two rows of each table.
void ExpectEveryColumnInItsPlace(const World& world) {
  const MetadataTables tables = world.Read();
  std::size_t begin = World::kRows;
  for (std::size_t table = 0; table < kTables.size(); ++table) {
    const auto name = static_cast<MetadataTable>(table);
    const std::size_t size = world.RowSize(table);
    for (const std::uint32_t row : {1U, 2U}) {
      std::size_t at = begin + (row - 1) * size;
      for (std::size_t column = 0; column < kTables[table].size(); ++column) {
        const std::size_t width = world.SizeOf(kTables[table][column]);
        const std::size_t pair = at / 2;
        ASSERT_EQ(tables.Value(name, row, column), (pair & 0xffffU) | (width == 4 ? (pair + 1) % 65536 << 16 : 0))
            << "table " << table << ", row " << row << ", column " << column;
        at += width;
      }
    }
    begin += size * tables.Count(name);
  }
}

TEST(MetadataTables, EveryColumnIsReadWhereTheStandardHasIt) {
  ExpectEveryColumnInItsPlace({});
}

TEST(MetadataTables, LargeHeapsMakeTheirColumnsWide) {
  for (const std::uint8_t heaps : std::to_array<std::uint8_t>({1, 2, 4})) {
    SCOPED_TRACE(int{heaps});
    World world;
    world.HasLargeHeaps(heaps);

    ExpectEveryColumnInItsPlace(world);
  }
}

TEST(MetadataTables, ATableOfManyRowsMakesTheColumnsWideThatNameThem) {
  World world;
  for (std::size_t table = 0; table < kTables.size(); ++table) {
    for (const unsigned int bits : {0U, 1U, 2U, 3U, 5U}) {
      for (const std::uint32_t rows : {(65536U >> bits) - 1, 65536U >> bits}) {
        SCOPED_TRACE("table " + std::to_string(table) + " has " + std::to_string(rows) + " rows");
        world.Has(table, rows);

        ExpectEveryColumnInItsPlace(world);
      }
    }
    world.Has(table, 2);
  }
}

TEST(MetadataTables, ATagNamesTheTableThatARowIsOf) {
  World world;
  std::size_t at = World::kStream + World::kRows;
  for (std::size_t table = 0; table < kTables.size(); ++table) {
    std::size_t place = at;
    for (std::size_t column = 0; column < kTables[table].size(); ++column) {
      if (const auto coded = kCodedColumns.find(kTables[table][column]); coded != kCodedColumns.end()) {
        const auto& [bits, named] = coded->second;
        for (std::uint32_t tag = 0; tag < 1U << bits; ++tag) {
          world.Put(place, 77U << bits | tag, 2);

          const MetadataRow row = world.Read().Named(static_cast<MetadataTable>(table), 1, column);

          EXPECT_EQ(row.table, tag < named.size() ? named[tag] : 0xff) << coded->first << ", tag " << tag;
          EXPECT_EQ(row.row, 77U);
        }
      }
      place += world.SizeOf(kTables[table][column]);
    }
    at += 2 * world.RowSize(table);
  }
}

TEST(MetadataTables, ATypesNumberHasItsTableInTheLowestBits) {
  EXPECT_TRUE(MetadataTables::TypeOf(5 << 2 | 1).IsIn(MetadataTable::kTypeRef));
  EXPECT_TRUE(MetadataTables::TypeOf(5 << 2 | 2).IsIn(MetadataTable::kTypeSpec));
  EXPECT_EQ(MetadataTables::TypeOf(5 << 2 | 2).row, 5U);
}

TEST(MetadataTables, ThereIsNoRowBeforeTheFirstNorBehindTheLast) {
  const World world;
  const MetadataTables tables = world.Read();

  EXPECT_THROW(static_cast<void>(tables.Value(MetadataTable::kAssembly, 0, 0)), std::out_of_range);
  EXPECT_NO_THROW(static_cast<void>(tables.Value(MetadataTable::kAssembly, 2, 0)));
  EXPECT_THROW(static_cast<void>(tables.Value(MetadataTable::kAssembly, 3, 0)), std::out_of_range);
}

TEST(MetadataTables, OtherBytesAreNoMetadata) {
  World world;
  world.Put(0, 'A', 1);

  EXPECT_THROW(static_cast<void>(world.Read()), std::out_of_range);
  EXPECT_THROW(MetadataTables(ByteView("")), std::out_of_range);
}

}  // namespace
}  // namespace doctor

// The tables of an assembly's metadata (ECMA-335, partition II, 24.2), as far as finding what code names takes.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "doctor/examine/assembly/byte_view.h"

namespace doctor {

enum class MetadataTable : std::uint8_t {
  kTypeRef = 0x01,
  kTypeDef = 0x02,
  kField = 0x04,
  kMethodDef = 0x06,
  kInterfaceImpl = 0x09,
  kMemberRef = 0x0a,
  kStandAloneSig = 0x11,
  kTypeSpec = 0x1b,
  kAssembly = 0x20,
  kAssemblyRef = 0x23,
  kMethodSpec = 0x2b,
};

/// A row of a table, counted from 1; row 0 is none.
struct MetadataRow {
  std::uint32_t table;
  std::uint32_t row;

  bool IsIn(MetadataTable one) const { return table == static_cast<std::uint32_t>(one); }
};

/// Reads rows column by column. Throws `std::out_of_range` for what is not there.
class MetadataTables {
 public:
  /// `root` begins with the metadata's signature.
  explicit MetadataTables(const ByteView& root);

  std::uint32_t Count(MetadataTable table) const { return counts_.at(static_cast<std::size_t>(table)); }
  std::uint32_t Value(MetadataTable table, std::uint32_t row, std::size_t column) const;
  std::string Text(MetadataTable table, std::uint32_t row, std::size_t column) const;
  /// The bytes of a column that is a blob.
  ByteView Blob(MetadataTable table, std::uint32_t row, std::size_t column) const;
  /// The row that a column names which may name rows of several tables.
  MetadataRow Named(MetadataTable table, std::uint32_t row, std::size_t column) const;

  /// The row that a number names which holds a type's table in its two lowest bits.
  static MetadataRow TypeOf(std::uint32_t coded);

 private:
  static constexpr std::size_t kTables = 0x2d;

  void ReadStreams(const ByteView& root);
  void ReadCounts();
  std::size_t SizeOf(std::uint8_t column) const;
  std::size_t RowSize(std::size_t table) const;

  ByteView tables_{{}};
  ByteView texts_{{}};
  ByteView blobs_{{}};
  std::uint8_t heap_sizes_ = 0;
  std::array<std::uint32_t, kTables> counts_{};
  std::array<std::size_t, kTables> begins_{};
};

}  // namespace doctor

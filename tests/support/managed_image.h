// The bytes of a managed assembly with metadata and a first function.
#pragma once

#include <cstdint>
#include <string>

namespace tests {

/// An assembly "app" whose first function calls a method of a type of "Needed"; "Other" is named as well. A test
/// changes what it wants.
struct ManagedImage {
  static constexpr std::uint32_t kTypeRef = 0x01000001;     ///< The type of "Needed".
  static constexpr std::uint32_t kMemberRef = 0x0a000001;   ///< The method that is called.
  static constexpr std::uint32_t kTypeSpec = 0x1b000001;    ///< The type that `type` describes.
  static constexpr std::uint32_t kMethodSpec = 0x2b000001;  ///< The method with other types put into it.

  std::uint32_t entry_point = 0x06000001;
  std::string code = Call(kMemberRef);  ///< The first function's, at most 60 bytes.
  bool has_fat_header = false;          ///< Whether that function's header is the long one.
  std::string type = {};                ///< A type's signature; when there is one, the method is of that type.
  std::uint16_t scope = 1 << 2 | 2;     ///< Where the type of `kTypeRef` is: the first reference.
  bool has_wide_addresses = false;      ///< Whether the file's optional header is that of 64 bits.

  /// The instruction that calls the function of this number.
  static std::string Call(std::uint32_t function);
  /// A number as it stands in the file.
  static std::string Number(std::uint64_t value, std::size_t size);

  std::string Bytes() const;
};

}  // namespace tests

// A shared library's bytes, taken apart by the rules of its format, to be cut and spoilt.
#pragma once

#include <elf.h>

#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace tests {

/// The bytes of a 64-bit ELF file, or of what once was one. The test's own reading of it.
class ElfImage {
 public:
  explicit ElfImage(std::string bytes) : bytes_(std::move(bytes)) {}

  [[nodiscard]] const std::string& Bytes() const { return bytes_; }

  /// The header; what the file does not hold is zero.
  [[nodiscard]] Elf64_Ehdr Header() const { return At<Elf64_Ehdr>(0); }
  /// The program headers, as many as the file holds.
  [[nodiscard]] std::vector<Elf64_Phdr> ProgramHeaders() const;

  /// True for a 64-bit shared object for this machine whose program headers and loadable segments lie in the file.
  [[nodiscard]] bool IsWhole() const;

  /// True when no loadable segment reaches, in memory, out of the range from the first one's start to the last one's
  /// end. That range is all that the dynamic loader reserves: what lies outside would overwrite whatever is there.
  [[nodiscard]] bool StaysInItsAddresses() const;

  /// Where the header, each program header and each segment begins and ends.
  [[nodiscard]] std::vector<std::size_t> Boundaries() const;

  /// The first `size` bytes.
  [[nodiscard]] ElfImage CutTo(std::size_t size) const { return ElfImage(bytes_.substr(0, size)); }
  /// The same bytes with the `width` lowest bytes of `value` at `offset`.
  [[nodiscard]] ElfImage With(std::size_t offset, std::size_t width, std::uint64_t value) const;

 private:
  template <typename T>
  [[nodiscard]] T At(std::size_t offset) const {
    T value{};
    if (offset < bytes_.size()) {
      std::memcpy(&value, bytes_.data() + offset, std::min(sizeof value, bytes_.size() - offset));
    }
    return value;
  }

  /// Whether the file holds `size` bytes from `offset` on.
  [[nodiscard]] bool Holds(std::uint64_t offset, std::uint64_t size) const {
    return offset <= bytes_.size() && size <= bytes_.size() - offset;
  }

  std::string bytes_;
};

/// What the dynamic loader does with a file, tried in a process of its own that is not part of the product.
enum class LoaderVerdict { kLoads, kRefuses, kCrashes };
[[nodiscard]] LoaderVerdict AskLoader(const std::filesystem::path& file);

}  // namespace tests

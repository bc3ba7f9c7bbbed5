// What the fuzz targets share: forms of their input, and models that several of them compare the product with.
#pragma once

#include <iconv.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// Ends the process, which the fuzzer reports with its input, unless `fact` holds.
inline void Require(bool fact) {
  if (!fact) {
    std::abort();
  }
}

/// The input as text.
inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// The input as UTF-16, two bytes a unit; an odd byte at the end is left out.
inline std::u16string AsUnits(const std::uint8_t* data, std::size_t size) {
  std::u16string units(size / 2, u'\0');
  std::copy_n(data, units.size() * 2, reinterpret_cast<std::uint8_t*>(units.data()));
  return units;
}

/// UTF-16 that can be written as text: ASCII is itself, the other bytes are units of each interesting kind, lone
/// surrogates included.
inline std::u16string Widened(std::string_view text) {
  constexpr char16_t kBases[] = {0x0780, 0xD800, 0xDC00, 0xFFE0};  // For 32 bytes each, from 0x80 on.
  std::u16string units;
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    units += byte < 0x80 ? char16_t{byte} : static_cast<char16_t>(kBases[(byte - 0x80) / 32] + byte % 32);
  }
  return units;
}

/// An input that is written as lines. Lines behind the last are empty.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}

  bool IsAtEnd() const { return text_.empty(); }
  /// Without its newline.
  std::string_view Next() {
    const std::string_view line = text_.substr(0, text_.find('\n'));
    text_.remove_prefix(std::min(line.size() + 1, text_.size()));
    return line;
  }
  /// A line's number; 0 when it is none.
  std::uint64_t NextNumber() { return Number(Next()); }
  /// All that is left.
  std::string_view Rest() { return std::exchange(text_, {}); }

  /// Cuts the first word, up to a blank, off a line.
  static std::string_view Word(std::string_view& line) {
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(std::min(word.size() + 1, line.size()));
    return word;
  }
  /// Decimal, or hexadecimal behind "0x". 0 for what is no number.
  static std::uint64_t Number(std::string_view word) {
    const bool isHex = word.starts_with("0x");
    word.remove_prefix(isHex ? 2 : 0);
    std::uint64_t number = 0;
    std::from_chars(word.data(), word.data() + word.size(), number, isHex ? 16 : 10);
    return number;
  }

 private:
  std::string_view text_;
};

/// A file that exists in memory only, for functions that take a path.
class MemoryFile {
 public:
  MemoryFile() : file_(::memfd_create("input", 0)), path_("/proc/self/fd/" + std::to_string(file_)) {
    Require(file_ >= 0);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(file_); }

  /// Replaces all that it holds.
  void Write(std::string_view bytes) {
    Require(::ftruncate(file_, 0) == 0);
    Require(::pwrite(file_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
  }
  const std::string& Path() const { return path_; }

 private:
  int file_;
  std::string path_;
};

/// The C library's strict conversion of a whole text.
class CLibraryConverter {
 public:
  CLibraryConverter(const char* to, const char* from) : converter_(::iconv_open(to, from)) {
    Require(converter_ != reinterpret_cast<iconv_t>(-1));
  }
  CLibraryConverter(const CLibraryConverter&) = delete;
  CLibraryConverter& operator=(const CLibraryConverter&) = delete;
  ~CLibraryConverter() { ::iconv_close(converter_); }

  /// Empty for malformed text.
  template <typename To, typename From>
  std::optional<std::basic_string<To>> Convert(std::basic_string_view<From> text) {
    std::basic_string<To> converted(text.size() * 3 + 1, To());
    auto* from = reinterpret_cast<char*>(const_cast<From*>(text.data()));
    auto* to = reinterpret_cast<char*>(converted.data());
    std::size_t left = text.size() * sizeof(From);
    std::size_t room = converted.size() * sizeof(To);
    ::iconv(converter_, nullptr, nullptr, nullptr, nullptr);
    if (::iconv(converter_, &from, &left, &to, &room) == static_cast<std::size_t>(-1)) {
      return std::nullopt;
    }
    converted.resize(converted.size() - room / sizeof(To));
    return converted;
  }

 private:
  iconv_t converter_;
};

/// UTF-8 as UTF-16, by the C library. Empty for what is not UTF-8.
inline std::optional<std::u16string> StrictUtf16(std::string_view bytes) {
  static CLibraryConverter converter("UTF-16LE", "UTF-8");
  return converter.Convert<char16_t>(bytes);
}

/// UTF-16 as UTF-8, by the C library. Empty for what is not UTF-16.
inline std::optional<std::string> StrictUtf8(std::u16string_view units) {
  static CLibraryConverter converter("UTF-8", "UTF-16LE");
  return converter.Convert<char>(units);
}

#include "doctor/judge/words/text.h"

#include <algorithm>

#include "foundation/char_converters.h"

namespace doctor {
namespace {

using tov::text::detail::StrictUtf8CharConverter;

std::string Escape(unsigned char byte) {
  switch (byte) {
    case '\t':
      return "\\t";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\\':
      return "\\\\";
    default: {
      constexpr std::string_view kDigits = "0123456789abcdef";
      return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
}

// Controls, and the characters that change the direction or the place of others.
bool IsSeen(char32_t value) {
  return value >= 0x20 && !(value >= 0x7F && value < 0xA0) && value != 0xAD && !(value >= 0x200B && value <= 0x200F) &&
         !(value >= 0x2028 && value <= 0x202E) && !(value >= 0x2060 && value <= 0x206F) && value != 0xFEFF;
}

}  // namespace

std::string Printable(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const auto read = StrictUtf8CharConverter::Read(bytes);
    const std::size_t length = read ? read->length : 1;
    if (read && IsSeen(read->value) && read->value != '\\') {
      text += bytes.substr(0, length);
    } else {
      for (const char byte : bytes.substr(0, length)) {
        text += Escape(static_cast<unsigned char>(byte));
      }
    }
    bytes.remove_prefix(length);
  }
  return text;
}

bool IsUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto read = StrictUtf8CharConverter::Read(bytes);
    if (!read) {
      return false;
    }
    bytes.remove_prefix(read->length);
  }
  return true;
}

std::string Quoted(std::string_view bytes) {
  std::string text = "'";
  text += Printable(bytes);
  return text += "'";
}

std::string ShellWord(std::string_view bytes) {
  constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
  if (!bytes.empty() && bytes.front() != '-' && bytes.find_first_not_of(kPlain) == std::string_view::npos) {
    return std::string(bytes);
  }
  std::string shown(bytes);
  std::erase(shown, '\\');
  const bool isShown = Printable(shown) == shown;
  std::string word = isShown ? "'" : "$'";
  for (const char letter : isShown ? std::string(bytes) : Printable(bytes)) {
    word += letter != '\'' ? std::string(1, letter) : isShown ? "'\\''" : "\\'";
  }
  return word += "'";
}

std::string LastLine(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  constexpr std::string_view kFrame = "   at ";
  std::string_view last;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const bool says = line.find_first_not_of(kBlanks) != std::string_view::npos && !line.starts_with(kFrame);
    last = says ? line : last;
  }
  const std::size_t first = std::min(last.find_first_not_of(kBlanks), last.size());
  return std::string(last.substr(first, last.find_last_not_of(kBlanks) + 1 - first));
}

std::size_t Columns(std::string_view text) {
  return static_cast<std::size_t>(
      std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

}  // namespace doctor

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "doctor/judge/checks.h"
#include "doctor/judge/near_misses.h"
#include "doctor/judge/text.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"

namespace doctor {
namespace {

namespace quor = netloader::quor::detail;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\f\v";

struct KeyMeaning {
  quor::SettingsKey key;
  std::string_view meaning;
};

constexpr auto kKeyMeanings = std::to_array<KeyMeaning>({
    {quor::SettingsKey::kDotnetRootFolder, "runtime root"},
    {quor::SettingsKey::kLoaderLoggingDir, "log folder"},
});
static_assert(quor::HasARowForEveryKey(kKeyMeanings), "every key has a meaning");

struct KnownKey {
  std::string name;
  std::string meaning;
};

const std::vector<KnownKey>& KnownKeys() {
  static const auto keys = [] {
    std::vector<KnownKey> rows;
    for (const auto& [key, meaning] : kKeyMeanings) {
      rows.push_back({ToUtf8(NameOf(key)), std::string(meaning)});
    }
    return rows;
  }();
  return keys;
}

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsBlank(char letter) {
  return kBlanks.find(letter) != std::string_view::npos;
}

bool EqualButForCase(std::string_view a, std::string_view b) {
  const auto lower = [](char letter) { return std::tolower(static_cast<unsigned char>(letter)); };
  return std::ranges::equal(a, b, {}, lower, lower);
}

// The key that was probably meant; null when it is none of the launcher's.
const KnownKey* Meant(std::string_view key) {
  const auto& keys = KnownKeys();
  const auto found =
      std::ranges::find_if(keys, [&](const KnownKey& known) { return EqualButForCase(Trimmed(key), known.name); });
  return found != keys.end() ? &*found : nullptr;
}

// A line that sets something, as a person reads it.
struct Line {
  const SettingsEntry& entry;
  bool has_mark = false;            // A byte-order mark stands in front.
  std::string_view key = {};        // Without the mark.
  const KnownKey* meant = nullptr;  // The launcher's key that was probably meant.
};

Line Read(const SettingsEntry& entry) {
  Line line{entry};
  line.has_mark = entry.line == 1 && (entry.key.empty() ? entry.value : entry.key).starts_with(kByteOrderMark);
  line.key = entry.key;
  if (line.has_mark && !entry.key.empty()) {
    line.key.remove_prefix(kByteOrderMark.size());
  }
  line.meant = Meant(line.key);
  return line;
}

std::string Place(const Line& line) {
  return "line " + std::to_string(line.entry.line);
}

std::optional<Clue> ByteOrderMark(const Line& line) {
  return line.has_mark ? std::optional(Clue{Place(line)}) : std::nullopt;
}

std::optional<Clue> AboutKey(const Line& line, bool isOdd) {
  if (line.meant == nullptr || !isOdd) {
    return std::nullopt;
  }
  return Clue{Place(line), {{"found", Quoted(line.key)}, {"key", line.meant->name}}};
}

std::optional<Clue> BlankAroundKey(const Line& line) {
  return AboutKey(line, Trimmed(line.key) != line.key);
}

std::optional<Clue> WrongLetterCase(const Line& line) {
  return AboutKey(line, line.meant != nullptr && Trimmed(line.key) != line.meant->name);
}

std::optional<Clue> AboutValue(const Line& line, bool (*isOdd)(std::string_view value)) {
  if (line.meant == nullptr || line.entry.value.empty() || !isOdd(line.entry.value)) {
    return std::nullopt;
  }
  return Clue{Place(line), {{"setting", line.meant->meaning}}};
}

std::optional<Clue> CarriageReturnAtEnd(const Line& line) {
  return AboutValue(line, [](std::string_view value) { return value.back() == '\r'; });
}

std::optional<Clue> BlankAtEnd(const Line& line) {
  return AboutValue(line, [](std::string_view value) { return value.back() != '\r' && IsBlank(value.back()); });
}

std::optional<Clue> BlankAtStart(const Line& line) {
  return AboutValue(line, [](std::string_view value) { return IsBlank(value.front()); });
}

std::optional<Clue> QuotedValue(const Line& line) {
  return AboutValue(line, [](std::string_view value) {
    value = Trimmed(value);
    return value.size() > 1 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
  });
}

std::optional<Clue> KeyGivenTwice(const Line& line) {
  if (line.entry.use != LineUse::kReplaced) {
    return std::nullopt;
  }
  return Clue{Place(line), {{"line", std::to_string(line.entry.replaced_by)}, {"found", Quoted(line.entry.key)}}};
}

// What each line is looked at for.
constexpr auto kLineChecks = std::to_array<Check<Line>>({
    {Finding::kByteOrderMark, ByteOrderMark},
    {Finding::kBlankAroundKey, BlankAroundKey},
    {Finding::kWrongLetterCase, WrongLetterCase},
    {Finding::kCarriageReturnAtEnd, CarriageReturnAtEnd},
    {Finding::kBlankAtEnd, BlankAtEnd},
    {Finding::kBlankAtStart, BlankAtStart},
    {Finding::kQuotedValue, QuotedValue},
    {Finding::kKeyGivenTwice, KeyGivenTwice},
});

}  // namespace

Warnings SettingsNearMisses(const SettingsReport& report) {
  Warnings warnings;
  for (const SettingsEntry& entry : report.entries) {
    Apply(kLineChecks, Read(entry), warnings);
  }
  return warnings;
}

}  // namespace doctor

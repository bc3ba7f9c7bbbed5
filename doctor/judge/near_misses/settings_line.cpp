#include "doctor/judge/near_misses/settings_line.h"

#include <pwd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <vector>

#include "doctor/judge/words/text.h"
#include "foundation/utf.h"
#include "netloader/netloaderquorcommon/src/settings_keys.h"

namespace doctor {
namespace {

namespace quor = netloader::quor::detail;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\f\v";
constexpr std::string_view kExport = "export";

// “ ” „ ‟ ‘ ’ ‚ « »
constexpr auto kTypographicQuotes = std::to_array<std::string_view>(
    {"\u201C", "\u201D", "\u201E", "\u201F", "\u2018", "\u2019", "\u201A", "\u00AB", "\u00BB"});

struct KeyMeaning {
  quor::SettingsKey key;
  std::string_view meaning;
};

constexpr auto kKeyMeanings = std::to_array<KeyMeaning>({
    {quor::SettingsKey::kDotnetRootFolder, "runtime root"},
    {quor::SettingsKey::kLoaderLoggingDir, "log folder"},
});
static_assert(quor::HasARowForEveryKey(kKeyMeanings), "every key has a meaning");

const std::vector<KnownKey>& KnownKeys() {
  static const auto keys = [] {
    std::vector<KnownKey> rows;
    rows.reserve(kKeyMeanings.size());
    for (const auto& [key, meaning] : kKeyMeanings) {
      rows.push_back({ToUtf8(NameOf(key)), std::string(meaning)});
    }
    return rows;
  }();
  return keys;
}

char Lower(char letter) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
}

// Whether one letter added, left out or replaced, or two exchanged, make one text of the other.
bool IsOneLetterOff(std::string_view a, std::string_view b) {
  if (a.size() > b.size()) {
    std::swap(a, b);
  }
  const auto [first, other] = std::ranges::mismatch(a, b, {}, Lower, Lower);
  const std::string_view rest(first, a.end());
  const std::string_view longer(other, b.end());
  if (a.size() != b.size()) {
    return b.size() == a.size() + 1 && EqualButForCase(rest, longer.substr(1));
  }
  const bool isReplaced = !rest.empty() && EqualButForCase(rest.substr(1), longer.substr(1));
  const bool areExchanged = rest.size() > 1 && Lower(rest[0]) == Lower(longer[1]) &&
                            Lower(rest[1]) == Lower(longer[0]) && EqualButForCase(rest.substr(2), longer.substr(2));
  return isReplaced || areExchanged;
}

const KnownKey* MeantKey(std::string_view key) {
  const auto& keys = KnownKeys();
  const auto found = std::ranges::find_if(
      keys, [&](const KnownKey& known) { return EqualButForCase(key, known.name) || IsOneLetterOff(key, known.name); });
  return found != keys.end() ? &*found : nullptr;
}

std::string_view WithoutQuotes(std::string_view value) {
  if (IsInQuotes(value)) {
    return value.substr(1, value.size() - 2);
  }
  for (const std::string_view quote : kTypographicQuotes) {
    value.remove_prefix(value.starts_with(quote) ? quote.size() : 0);
    value.remove_suffix(value.ends_with(quote) ? quote.size() : 0);
  }
  return value;
}

// The user's home folder; empty when there is no such user.
std::string HomeOf(const std::string& user) {
  const passwd* entry = ::getpwnam(user.c_str());
  return entry != nullptr ? entry->pw_dir : "";
}

std::string OwnHome() {
  const char* home = std::getenv("HOME");
  return home != nullptr ? home : "";
}

// The folder that a shell puts in the place of the word in front of a path; empty for other words.
std::string FolderFor(std::string_view word) {
  if (word == "~" || word == "$HOME" || word == "${HOME}") {
    return OwnHome();
  }
  return word.starts_with('~') ? HomeOf(std::string(word.substr(1))) : "";
}

// As a shell would replace its first name; unchanged where it would not.
std::string WithHome(std::string_view value) {
  const std::string_view word = value.substr(0, value.find('/'));
  const std::string folder = FolderFor(word);
  return std::string(folder.empty() ? word : folder).append(value.substr(word.size()));
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsBlank(char letter) {
  return kBlanks.find(letter) != std::string_view::npos;
}

bool EqualButForCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, Lower, Lower);
}

bool IsInQuotes(std::string_view value) {
  value = Trimmed(value);
  return value.size() > 1 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
}

bool IsInTypographicQuotes(std::string_view value) {
  return std::ranges::any_of(kTypographicQuotes,
                             [&](std::string_view quote) { return Trimmed(value).starts_with(quote); });
}

SettingsLine ReadAsMeant(const SettingsEntry& entry, const SettingsReport& settings) {
  SettingsLine line{entry, settings};
  const bool isSkipped = entry.key.empty();
  std::string_view text = isSkipped ? entry.value : entry.key;
  line.has_mark = entry.line == 1 && text.starts_with(kByteOrderMark);
  text.remove_prefix(line.has_mark ? kByteOrderMark.size() : 0);
  const std::size_t colon = isSkipped ? text.find(':') : std::string_view::npos;
  line.has_colon = colon != std::string_view::npos;
  line.key = isSkipped && !line.has_colon ? std::string_view() : text.substr(0, colon);
  line.value = line.has_colon ? text.substr(colon + 1) : isSkipped ? std::string_view() : entry.value;
  line.bare_key = Trimmed(line.key);
  line.has_export = line.bare_key.starts_with(kExport) && line.bare_key.size() > kExport.size() &&
                    IsBlank(line.bare_key[kExport.size()]);
  line.bare_key = Trimmed(line.bare_key.substr(line.has_export ? kExport.size() : 0));
  line.meant = MeantKey(line.bare_key);
  return line;
}

std::string MeantLine(const SettingsLine& line) {
  return line.meant->name + "=" + MeantValue(line);
}

std::string MeantValue(const SettingsLine& line) {
  return WithHome(WithoutQuotes(Trimmed(line.value.substr(0, line.value.find('\0')))));
}

bool IsAboutRoot(const SettingsLine& line) {
  return line.meant != nullptr && line.meant->name == ToUtf8(NameOf(quor::SettingsKey::kDotnetRootFolder));
}

std::string SedReplacement(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    escaped += (letter == '\\' || letter == '&' || letter == '|') ? "\\" : "";
    escaped += letter;
  }
  return escaped;
}

}  // namespace doctor

#include <algorithm>
#include <iterator>
#include <string_view>

#include "doctor/examine/settings_report.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/near_misses/settings_line.h"
#include "doctor/judge/shown_line.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"
#include "netloader/netloaderhostfxr/src/string_token.h"

namespace doctor {
namespace {

// Writes the line anew; words where it is not known what to write.
std::string CommandFor(const SettingsLine& line, const std::string& script) {
  const bool isKnown = MeantLine(line) != line.entry.key + "=" + line.entry.value;
  return isKnown ? "sed -i " + ShellWord(script) + " " + ShellWord(line.settings.path)
                 : "write the folder itself into line " + std::to_string(line.entry.line) + " of " +
                       Printable(line.settings.path);
}

// What can be said of every line.
Clue AtAny(const SettingsLine& line, Values values = {}) {
  const std::string number = std::to_string(line.entry.line);
  values.emplace("line", number);
  values.emplace("file_word", ShellWord(line.settings.path));
  const ShownLine shown = ShownOf(line.entry);
  values.emplace("found", line.meant != nullptr ? Quoted(line.key) : shown.key ? Quoted(*shown.key) : "its key");
  return {"line " + number, std::move(values), IsAboutRoot(line) && line.entry.use != LineUse::kReplaced};
}

// And of one that is to be written anew.
Clue At(const SettingsLine& line) {
  Clue clue = AtAny(line);
  if (line.meant != nullptr) {
    clue.values.emplace("key", line.meant->name);
    clue.values.emplace("setting", line.meant->meaning);
    clue.values.emplace("value", Quoted(line.value));
    const std::string script = std::to_string(line.entry.line) + "s|.*|" + SedReplacement(MeantLine(line)) + "|";
    clue.values.emplace("script_word", ShellWord(script));
    clue.values.emplace("command", CommandFor(line, script));
  }
  return clue;
}

std::optional<Clue> ByteOrderMark(const SettingsLine& line) {
  return line.has_mark ? std::optional(At(line)) : std::nullopt;
}

std::optional<Clue> AboutKey(const SettingsLine& line, bool isOdd) {
  return line.meant != nullptr && isOdd ? std::optional(At(line)) : std::nullopt;
}

std::optional<Clue> ColonForEquals(const SettingsLine& line) {
  return AboutKey(line, line.has_colon);
}

std::optional<Clue> ExportBeforeKey(const SettingsLine& line) {
  return AboutKey(line, line.has_export);
}

std::optional<Clue> BlankAroundKey(const SettingsLine& line) {
  return AboutKey(line, !line.has_colon && Trimmed(line.key) != line.key);
}

std::optional<Clue> WrongLetterCase(const SettingsLine& line) {
  return AboutKey(line, line.meant != nullptr && line.bare_key != line.meant->name &&
                            EqualButForCase(line.bare_key, line.meant->name));
}

std::optional<Clue> KeyNearlyRight(const SettingsLine& line) {
  return AboutKey(line, line.meant != nullptr && !EqualButForCase(line.bare_key, line.meant->name));
}

std::optional<Clue> AboutValue(const SettingsLine& line, bool (*isOdd)(std::string_view value)) {
  const bool isOne = line.meant != nullptr && !line.has_colon && !line.value.empty();
  return isOne && isOdd(line.value) ? std::optional(At(line)) : std::nullopt;
}

std::optional<Clue> CarriageReturnAtEnd(const SettingsLine& line) {
  return AboutValue(line, [](std::string_view value) { return value.back() == '\r'; });
}

std::optional<Clue> BlankAtEnd(const SettingsLine& line) {
  return AboutValue(line, [](std::string_view value) {
    const auto last = value.find_last_not_of('\r');
    return last != std::string_view::npos && IsBlank(value[last]);
  });
}

std::optional<Clue> BlankAtStart(const SettingsLine& line) {
  return AboutValue(line, [](std::string_view value) { return IsBlank(value.front()); });
}

std::optional<Clue> QuotedValue(const SettingsLine& line) {
  return AboutValue(line, IsInQuotes);
}

std::optional<Clue> TypographicQuotes(const SettingsLine& line) {
  return AboutValue(line, IsInTypographicQuotes);
}

std::optional<Clue> TildeInValue(const SettingsLine& line) {
  return AboutValue(line, [](std::string_view value) { return Trimmed(value).starts_with('~'); });
}

// The words of the dynamic loader are another matter: nobody means a value by them.
std::optional<Clue> VariableInValue(const SettingsLine& line) {
  return AboutValue(line, [](std::string_view value) {
    return value.find('$') != std::string_view::npos && netloader::FindStringToken(value).empty();
  });
}

std::optional<Clue> NulInValue(const SettingsLine& line) {
  return AboutValue(line, [](std::string_view value) { return value.find('\0') != std::string_view::npos; });
}

// What each line is looked at for that can be mended by writing it anew.
constexpr auto kLineChecks = std::to_array<Check<SettingsLine>>({
    {Finding::kByteOrderMark, ByteOrderMark},
    {Finding::kExportBeforeKey, ExportBeforeKey},
    {Finding::kColonForEquals, ColonForEquals},
    {Finding::kBlankAroundKey, BlankAroundKey},
    {Finding::kWrongLetterCase, WrongLetterCase},
    {Finding::kKeyNearlyRight, KeyNearlyRight},
    {Finding::kCarriageReturnAtEnd, CarriageReturnAtEnd},
    {Finding::kBlankAtEnd, BlankAtEnd},
    {Finding::kBlankAtStart, BlankAtStart},
    {Finding::kQuotedValue, QuotedValue},
    {Finding::kTypographicQuotes, TypographicQuotes},
    {Finding::kTildeInValue, TildeInValue},
    {Finding::kVariableInValue, VariableInValue},
    {Finding::kNulInValue, NulInValue},
});

std::optional<Clue> SectionHeading(const SettingsLine& line) {
  const std::string_view text = Trimmed(line.entry.key.empty() ? line.entry.value : std::string_view());
  return text.size() > 2 && text.front() == '[' && text.back() == ']' ? std::optional(AtAny(line)) : std::nullopt;
}

Clue GivenAgain(const SettingsLine& line) {
  Clue clue = AtAny(line, {{"other", std::to_string(line.entry.replaced_by)}});
  clue.may_decide = IsAboutRoot(line) && !line.value.empty();
  return clue;
}

// What else each line is looked at for.
constexpr auto kOtherChecks = std::to_array<Check<SettingsLine>>({
    {Finding::kSectionHeading, SectionHeading},
});

// Of keys that are given again the first are enough: a file of a million equal lines has a million of them.
class RepeatedKeys {
 public:
  void LookAt(const SettingsLine& line, Warnings& warnings) {
    if (line.entry.use != LineUse::kReplaced) {
      return;
    }
    if (++count_ <= kMost) {
      warnings.push_back(Worded(Finding::kKeyGivenTwice, GivenAgain(line)));
    } else {
      ++warnings.left_out;
    }
  }

 private:
  static constexpr std::size_t kMost = 1000;

  std::size_t count_ = 0;
};

// All that is wrong with one line in one warning, which comes first and is mended at once.
Warning Together(const Warnings& mistakes, const SettingsLine& line) {
  std::string list;
  for (const Warning& mistake : mistakes) {
    list += (list.empty() ? "" : "; ") + mistake.text;
  }
  Clue clue = At(line);
  clue.values["list"] = list;
  return Worded(Finding::kSeveralMistakes, clue);
}

}  // namespace

Warnings SettingsNearMisses(const SettingsReport& report) {
  Warnings warnings = SettingsFileNearMisses(report);
  RepeatedKeys repeated;
  for (const SettingsEntry& entry : report.entries) {
    const SettingsLine line = ReadAsMeant(entry, report);
    Warnings mistakes;
    Apply(kLineChecks, line, mistakes);
    if (mistakes.size() > 1 && line.meant != nullptr) {
      warnings.push_back(Together(mistakes, line));
    }
    std::ranges::move(mistakes, std::back_inserter(warnings));
    Apply(kOtherChecks, line, warnings);
    repeated.LookAt(line, warnings);
  }
  return warnings;
}

}  // namespace doctor

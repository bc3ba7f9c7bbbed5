#include "doctor/report/explanation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <numeric>
#include <utility>

#include "doctor/judge/findings.h"
#include "doctor/report/page.h"

namespace doctor {
namespace {

constexpr std::size_t kNearest = 3;

// How a finding comes about, where cause and meaning do not say it.
struct About {
  Finding finding;
  std::string_view words;
};

constexpr auto kAbout = std::to_array<About>({
    {Finding::kSettingsMissing,
     "The package installs a sample only. The file is written once for each server, by hand or by its set-up."},
    {Finding::kSettingsUnreadable,
     "Mostly the file was written by root with a strict umask, and a service of another user is to read it."},
    {Finding::kSettingsNotUtf8, "An editor saved letters such as umlauts in another encoding, often that of Windows."},
    {Finding::kNoRoot,
     "The line was never written, or something in it makes another key of it; lines that look so are named as well."},
    {Finding::kRootMissing,
     "The .NET was installed elsewhere, was removed, or its disk is not mounted. Users may see different folders."},
    {Finding::kNoHostFolder,
     "The folder is not the root of a .NET installation, which is the one that holds the program dotnet and the "
     "folders "
     "host and shared."},
    {Finding::kHostFolderUnreadable, "Its rights do not let the user in who launches, or a security policy does not."},
    {Finding::kNoVersion,
     "Only another version was installed, or the runtime was updated to a newer one and the old one removed."},
    {Finding::kNoVersionLoads,
     "Each library was refused: damaged, for another machine, or in need of a library that the system does not have."},
    {Finding::kEndsWhileLoading,
     "A library that was damaged without changing its length does that; so may a foreign one."},
    {Finding::kOlderRuntime, "A newer runtime cannot be loaded, so an older one is taken: an update has gone wrong."},
    {Finding::kHostRefuses,
     "The runtime's host was loaded and did not accept the application. The number is its reason."},
    {Finding::kSettingsHaveExtension, "Editors of Windows add the extension, and its file manager hides it."},
    {Finding::kSettingsAreUtf16, "Windows calls this encoding Unicode."},
    {Finding::kByteOrderMark,
     "Editors of Windows write three bytes in front of a file in UTF-8, which cannot be seen."},
    {Finding::kCarriageReturnAtEnd,
     "Windows ends a line with two characters, and the first of them stays in the value."},
    {Finding::kBlankAtEnd, "Nothing is trimmed, and the blank cannot be seen in an editor."},
    {Finding::kTypographicQuotes, "Word processors and mail programs make them of plain ones."},
    {Finding::kTildeInValue, "Only a shell replaces it, and no shell reads the settings."},
    {Finding::kVariableInValue, "Only a shell replaces it, and no shell reads the settings."},
    {Finding::kFolderIsLink, "Some packages and administrators put links in the place of folders that were moved."},
    {Finding::kLibraryIsLink, "Some packages put one file in several places that way."},
    {Finding::kFolderNotEntered, "It takes the right to enter for every folder above a file, not only for the file."},
    {Finding::kNoexec, "Administrators mount file systems so that are meant for data, such as those of homes or /tmp."},
    {Finding::kOtherMachine,
     "The download for ARM or for 32 bits was taken, or files were copied from another machine."},
    {Finding::kOtherRuntime, "The .NET of the system was updated, or only the newest one was installed."},
    {Finding::kTwoFeeds,
     "The distribution and Microsoft both have packages of .NET, and installing from both mixes them. One feed is "
     "enough."},
    {Finding::kRuntimeElsewhere, "Packages, the install script and snaps put .NET into different folders."},
    {Finding::kOwnedByAnother, "It was copied or unpacked by an ordinary user, who owns it since then."},
    {Finding::kMissingFramework, "The host is there without the framework, often since two packages have parted them."},
    {Finding::kRuntimeFileBroken, "A full disk, a broken download or a copy that ended early leaves such a runtime."},
});

// What a report says in the place of a name in braces, where its name in capitals would not be understood.
struct Placeholder {
  std::string_view name;
  std::string_view words;
};

constexpr auto kPlaceholders = std::to_array<Placeholder>({
    {"command", "the command that the report shows"},
    {"detail", "the reason"},
    {"did", "crashes, ends or throws an exception"},
    {"file", "FILE"},
    {"fault", "is not JSON, or not what the host takes it for"},
    {"found", "NAME"},
    {"flags", ""},
    {"list", "The report lists them"},
    {"more", ""},
    {"place", "PATH"},
    {"problem", "the runtime root holds no runtime that can be used"},
    {"product", "the version of the framework that is needed"},
    {"reason", "the system's reason"},
    {"result", ""},
    {"said", "its reason"},
    {"says", ""},
    {"sentence", "ICU is missing"},
    {"setting", "path"},
    {"source", "The report shows the answer of the host"},
    {"state", "is missing or broken"},
    {"there", ""},
    {"which", "none of the .NET 6.0 runtimes can"},
    {"who", "[ugo]"},
    {"would", "would do"},
    {"why", ""},
    {"words", "shorter than its headers say"},
});

std::string WordsFor(std::string_view name) {
  constexpr std::string_view kQuoted = "_word";
  if (name.ends_with(kQuoted)) {
    name.remove_suffix(kQuoted.size());
  }
  if (const auto row = std::ranges::find(kPlaceholders, name, &Placeholder::name); row != kPlaceholders.end()) {
    return std::string(row->words);
  }
  std::string capitals(name);
  std::ranges::transform(capitals, capitals.begin(), [](char letter) {
    return letter == '_' ? '-' : static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
  });
  return capitals;
}

std::string InWords(std::string_view text) {
  std::string words;
  while (true) {
    const std::size_t open = text.find('{');
    const std::size_t close = text.find('}', open);
    if (open == std::string_view::npos || close == std::string_view::npos) {
      return words.append(text);
    }
    words.append(text.substr(0, open)).append(WordsFor(text.substr(open + 1, close - open - 1)));
    text.remove_prefix(close + 1);
  }
}

std::string Sentence(std::string_view clause) {
  std::string sentence = InWords(clause);
  if (!sentence.empty()) {
    sentence.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sentence.front())));
  }
  return sentence + ".";
}

// Whether it consists of nothing but what a report has found.
bool IsFoundOnly(std::string_view text) {
  return text.starts_with('{') && text.find('}') + 2 >= text.size();
}

std::string_view AboutOf(Finding finding) {
  const auto row = std::ranges::find(kAbout, finding, &About::finding);
  return row != kAbout.end() ? row->words : std::string_view();
}

// How many letters are to be added, left out or replaced to make one of the other.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<std::string> Explanation(std::string_view code, std::size_t width) {
  const auto row = std::ranges::find(kFindings, code, &FindingText::code);
  if (row == kFindings.end()) {
    return std::nullopt;
  }
  Page page(false, width);
  page.Paragraph(std::string(code), 0);
  const std::string meaning = IsFoundOnly(row->meaning) ? std::string() : InWords(row->meaning);
  for (const std::string& words : {Sentence(row->cause), meaning, std::string(AboutOf(row->value))}) {
    if (!words.empty()) {
      page.Paragraph(words, kIndent);
    }
  }
  if (!row->cure.empty()) {
    page.Line("To mend it:  " + InWords(row->cure), kIndent);
  }
  return page.Text();
}

std::vector<std::string_view> NearestCodes(std::string_view code) {
  std::vector<std::string_view> codes(kFindings.size());
  std::ranges::transform(kFindings, codes.begin(), &FindingText::code);
  // Whoever remembers one word of a code types that.
  const auto rank = [code](std::string_view other) {
    return std::pair(other.find(code) == std::string_view::npos, Distance(code, other));
  };
  std::ranges::stable_sort(codes, {}, rank);
  codes.resize(std::min(kNearest, codes.size()));
  return codes;
}

std::string AllCodes() {
  std::string codes;
  for (const FindingText& row : kFindings) {
    codes.append(row.code).append("\n");
  }
  return codes;
}

}  // namespace doctor

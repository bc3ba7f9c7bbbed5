// What looks like a mistake: one row for each kind, which reports, JSON and documents share.
#pragma once

#include "doctor/judge/named.h"

namespace doctor {

enum class Finding {
  kCarriageReturnAtEnd,
  kBlankAtEnd,
  kBlankAtStart,
  kBlankAroundKey,
  kByteOrderMark,
  kQuotedValue,
  kWrongLetterCase,
  kKeyGivenTwice,
  kRelativeRoot,
  kRootIsFile,
  kRootIsFxr,
  kFolderIsLink,
  kLibraryIsLink,
  kFolderNotEntered,
  kOctalNumber,
  kHexadecimalNumber,
  kNoNumber,
  kOddOrder,
  kEqualNumbers,
  kOtherMachine,
  kCutShort,
  kNoexec,
  kOtherRuntime,
  kTmpEmpty,
  kMissingAssembly,
  kMissingFramework,
};

/// `meaning` says what is odd and what comes of it, `cure` what to do; names in braces stand for what was found.
struct FindingText {
  Finding value;
  std::string_view code;
  std::string_view meaning;
  std::string_view cure;
};

inline constexpr auto kFindings = std::to_array<FindingText>({
    {Finding::kCarriageReturnAtEnd, "carriage-return-at-end",
     "the {setting} ends with a carriage return, which is part of it", "save the file with plain line ends (LF)"},
    {Finding::kBlankAtEnd, "blank-at-end", "the {setting} ends with a blank, which is part of it",
     "remove what follows the last letter of the line"},
    {Finding::kBlankAtStart, "blank-at-start", "the {setting} begins with a blank, which is part of it",
     "write the value right after the equals sign"},
    {Finding::kBlankAroundKey, "blank-around-key", "the key {found} has a blank around it, so it is another key",
     "write {key}= without any blank before the equals sign"},
    {Finding::kByteOrderMark, "byte-order-mark",
     "the file begins with a byte-order mark, which becomes part of the first key",
     "save the file as UTF-8 without a byte-order mark"},
    {Finding::kQuotedValue, "quoted-value", "the {setting} stands in quotes, which are part of it",
     "remove the quotes"},
    {Finding::kWrongLetterCase, "wrong-letter-case", "the key {found} differs in letter case, so it is another key",
     "write {key}"},
    {Finding::kKeyGivenTwice, "key-given-twice", "line {line} sets {found} again, and the last one counts",
     "remove the line that is not meant"},
    {Finding::kRelativeRoot, "relative-root", "the runtime root is a relative path, and nothing is loaded from one",
     "name the root by its full path, from / on"},
    {Finding::kRootIsFile, "root-is-file", "the runtime root is a file, not the folder of the installation",
     "name the folder that holds it: {folder}"},
    {Finding::kRootIsFxr, "root-is-fxr",
     "the runtime root is itself a host/fxr folder; host/fxr is looked for below the root",
     "name the installation's folder: {folder}"},
    {Finding::kFolderIsLink, "folder-is-link", "the folder is a symbolic link, and links are not followed",
     "replace the link by the folder it leads to"},
    {Finding::kLibraryIsLink, "library-is-link", "the library is a symbolic link, and links are not followed",
     "replace the link by the file it leads to"},
    {Finding::kFolderNotEntered, "folder-not-entered", "this user cannot enter the folder",
     "let the user that launches read and enter it"},
    {Finding::kOctalNumber, "octal-number", "{tail} is read as octal: {number}",
     "name the folder by its plain version number, without a zero in front"},
    {Finding::kHexadecimalNumber, "hexadecimal-number", "{tail} is read as hexadecimal: {number}",
     "name the folder by its plain version number"},
    {Finding::kNoNumber, "no-number", "{tail} is read as no number at all, and counts as 0",
     "name the folder by its plain version number"},
    {Finding::kOddOrder, "odd-order", "{first} is tried before {second}, against the order that their numbers suggest",
     "name the folders by their plain version numbers"},
    {Finding::kEqualNumbers, "equal-numbers",
     "{first} and {second} count as the same number, {number}, so their order is not defined", "remove one of them"},
    {Finding::kOtherMachine, "other-machine", "the library is built for another machine or word size",
     "install the runtime for Linux x64"},
    {Finding::kCutShort, "cut-short", "the library is {words}", "install that runtime again"},
    {Finding::kNoexec, "noexec", "the file system is mounted noexec, so nothing can be loaded from it",
     "mount it with exec, or install the runtime elsewhere"},
    {Finding::kOtherRuntime, "other-runtime", "version {version} is installed, but only {prefix}x is looked for",
     "install a .NET 6.0 runtime, if there is none; no other serves"},
    {Finding::kTmpEmpty, "tmp-empty", "TMP is set but empty: it makes the log folder empty, and TEMP is not looked at",
     "unset TMP, or give it a folder"},
    {Finding::kMissingAssembly, "missing-assembly", "the application's assembly is missing",
     "install the product again"},
    {Finding::kMissingFramework, "missing-framework",
     "the application needs {framework} {version}, which the runtime root does not have",
     "install that framework under the runtime root"},
});
static_assert(IsComplete(kFindings, Finding::kMissingFramework));

}  // namespace doctor

#include "doctor/judge/near_misses/checks.h"

#include <filesystem>

#include "doctor/judge/words/named.h"
#include "doctor/judge/words/text.h"
#include "netloader/netloaderhostfxr/src/string_token.h"

namespace doctor {

Clue AtPath(const std::string& path, Values values) {
  values.emplace("place_word", ShellWord(path));
  return {Printable(path), std::move(values)};
}

std::optional<Clue> AtStringToken(const std::string& path) {
  const std::string token(netloader::FindStringToken(path));
  return token.empty() ? std::nullopt : std::optional(AtPath(path, {{"token", Printable(token)}}));
}

std::optional<Clue> AtLinkToNowhere(const std::string& link) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::read_symlink(link, error);
  if (error || std::filesystem::exists(link, error)) {
    return std::nullopt;
  }
  return AtPath(link, {{"target", Printable(target.string())}});
}

Warning Worded(Finding finding, const Clue& clue) {
  const FindingText& text = RowOf(kFindings, finding);
  Values values = clue.values;
  values.emplace("place", clue.place);
  Warning warning{finding, clue.place};
  warning.text = Filled(text.cause, values);
  warning.meaning = Filled(text.meaning, values);
  warning.cure = Filled(text.cure, values);
  warning.may_decide = clue.may_decide;
  return warning;
}

}  // namespace doctor

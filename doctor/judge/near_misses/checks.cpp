#include "doctor/judge/near_misses/checks.h"

#include "doctor/judge/words/text.h"

namespace doctor {

Clue AtPath(const std::string& path, Values values) {
  values.emplace("place_word", ShellWord(path));
  return {Printable(path), std::move(values)};
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

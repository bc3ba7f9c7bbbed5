#include "doctor/judge/checks.h"

namespace doctor {

Warning Worded(Finding finding, const Clue& clue) {
  const FindingText& text = RowOf(kFindings, finding);
  return {finding, clue.place, Filled(text.meaning, clue.values), Filled(text.cure, clue.values)};
}

}  // namespace doctor

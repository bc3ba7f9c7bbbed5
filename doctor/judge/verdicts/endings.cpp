#include "doctor/judge/verdicts/endings.h"

#include "doctor/judge/words/message.h"
#include "doctor/judge/words/text.h"
#include "doctor/judge/words/time_limit.h"
#include "doctor/judge/words/version_reasons.h"
#include "launcher/product/last_words.h"

namespace doctor {
namespace {

std::string Line(const launcher::LastWords& words) {
  return std::string(words.head) + words.what;
}

// What a child did that did not finish, as the verb of a sentence.
std::string Deed(const ChildResult& child) {
  switch (child.end) {
    case ChildEnd::kThrew:
    case ChildEnd::kThrewUnknown:
      return "throws an exception";
    case ChildEnd::kCrashed:
      return "crashes";
    case ChildEnd::kExited:
    case ChildEnd::kFinished:
    case ChildEnd::kTimedOut:
    case ChildEnd::kNotStarted:
      break;
  }
  return "ends the process";
}

}  // namespace

Verdict Refuses(Stop stop, Finding finding, const Clue& clue) {
  return {Outcome::kStatus255, stop, Worded(finding, clue), {}, 255};
}

Verdict Aborts(Stop stop, Finding finding, const Clue& clue, const std::string& what) {
  return {Outcome::kAborts, stop, Worded(finding, clue), Line(launcher::LastWordsAfterException(what.c_str()))};
}

Verdict EndsLike(const ChildResult& child, Stop stop, Warning cause) {
  Verdict verdict{Outcome::kNotKnown, stop, std::move(cause)};
  switch (child.end) {
    case ChildEnd::kThrew:
      verdict.outcome = Outcome::kAborts;
      verdict.message = Line(launcher::LastWordsAfterException(child.message.c_str()));
      break;
    case ChildEnd::kThrewUnknown:
      verdict.outcome = Outcome::kAborts;
      verdict.message = Line(launcher::kLastWordsAfterAnythingElse);
      break;
    case ChildEnd::kCrashed:
      verdict.outcome = Outcome::kDies;
      verdict.code = child.code;
      break;
    case ChildEnd::kExited:
      verdict.outcome = Outcome::kExits;
      verdict.code = child.code;
      break;
    case ChildEnd::kFinished:
    case ChildEnd::kTimedOut:
    case ChildEnd::kNotStarted:
      break;
  }
  return verdict;
}

Verdict EndsLike(const ChildResult& child, Stop stop, Finding ended, Finding notFinished, Clue clue) {
  clue.values.merge(LimitValues(child));
  clue.values.emplace("did", Deed(child));
  const std::string words = Printable(LastWords(child));
  clue.values.emplace("output", words.empty() ? words : "It wrote: " + words);
  return EndsLike(child, stop, Worded(child.end == ChildEnd::kTimedOut ? notFinished : ended, clue));
}

}  // namespace doctor

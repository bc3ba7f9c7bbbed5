// What the doctor's report opens with, and whether its cure cures.
#pragma once

#include <optional>
#include <string>

#include "tests/support/process.h"

namespace tests {

/// The first lines of a report.
struct Opening {
  std::string line;     ///< How a launch would end, and why.
  std::string code;     ///< Of the finding that decides; "" for none.
  std::string meaning;  ///< "" for none, as is the cure.
  std::string cure;
};

/// Of a report in JSON; nothing when it is none.
[[nodiscard]] std::optional<Opening> ReadOpening(const std::string& report);

/// What an opening has to hold.
struct Words {
  const char* code;   ///< Of the finding that decides, whole; "" for none.
  const char* cause;  ///< A piece of the first line or of what it means.
  const char* cure;   ///< A piece of the cure; "" where there is none.
};

/// Fails the test, and shows the opening, when it does not hold the words.
void ExpectWords(const Opening& opening, const Words& words);

/// Whether the line names the exit status or the signal that ended the process.
[[nodiscard]] bool SaysHowItEnded(const std::string& line, const Outcome& ended);

/// Whether a cure can be given to a shell as it stands.
[[nodiscard]] bool IsCommand(const std::string& cure);

/// Gives the cure to a shell; fails the test when the shell does.
void CarryOut(const std::string& cure);

/// The variable that a cure takes out of the environment; nothing of another cure, which `CarryOut` is for.
[[nodiscard]] std::optional<std::string> UnsetBy(const std::string& cure);

/// Becomes a user without any rights, or ends the process. For Command::Before().
void BecomeNobody();
/// The same, as the user of that number.
void BecomeUser(unsigned int number);

}  // namespace tests

// Looking for mistakes by tables of small checks: a finding, and the function that looks for it.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "doctor/judge/findings.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/message.h"

namespace doctor {

/// Where a check found something, and the values for its message; printable. A message also knows `{place}`, and
/// `{place_word}` quoted for a shell where the place is a path.
struct Clue {
  std::string place;
  Values values = {};
  bool may_decide = true;  ///< False when a launch does not depend on it.
};

/// One row of a table of checks that look at the same kind of thing.
template <typename Subject>
struct Check {
  Finding finding;
  std::optional<Clue> (*look)(const Subject& subject);
};

/// The clue to a path, with its word for a shell.
Clue AtPath(const std::string& path, Values values = {});

/// The clue to a word in a path that the dynamic loader replaces, with `{token}`; none when there is none.
std::optional<Clue> AtStringToken(const std::string& path);

/// The clue to a symbolic link that leads nowhere, with `{target}`; none when it leads somewhere, or is none.
std::optional<Clue> AtLinkToNowhere(const std::string& link);

/// The finding's message about what was found.
Warning Worded(Finding finding, const Clue& clue);

/// Has each check of the table look at the subject, in order, and adds a warning for each clue.
template <typename Subject, std::size_t kSize>
void Apply(const std::array<Check<Subject>, kSize>& checks, const Subject& subject, Warnings& warnings) {
  for (const Check<Subject>& check : checks) {
    if (const auto clue = check.look(subject)) {
      warnings.push_back(Worded(check.finding, *clue));
    }
  }
}

/// The warnings of a table about one subject.
template <typename Subject, std::size_t kSize>
Warnings Noticed(const std::array<Check<Subject>, kSize>& checks, const Subject& subject) {
  Warnings warnings;
  Apply(checks, subject, warnings);
  return warnings;
}

}  // namespace doctor

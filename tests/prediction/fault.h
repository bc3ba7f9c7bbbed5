// Faults, one at a time: how a launch ends, and the words that the doctor has for it.
#pragma once

#include <span>
#include <string>

#include "tests/prediction/known_world.h"

namespace tests {

/// A row: what is done to a sound product, application included, whose only version is 6.0.36, how a launch is known to
/// end, and pieces of what the doctor's report opens with. A cure that is a command is carried out, and has to mend the
/// product.
struct Fault {
  const char* name;
  void (*inflict)(KnownWorld& world);
  const char* outcome;
  const char* code;             ///< Of the finding that decides, whole; "" for none.
  const char* cause;            ///< A piece of the first line or of what it means.
  const char* cure;             ///< A piece of the cure; "" where there is none.
  const char* wrong = nullptr;  ///< What is not right yet; then the words and the cure are not checked.
};

/// A fault of the settings: their bytes, in which @ stands for the root of the sound runtime.
struct SettingsFault {
  const char* name;
  std::string settings;
  const char* outcome;
  const char* code;
  const char* cause;
  const char* cure;
  const char* wrong = nullptr;
};

/// Checks each row in a product of its own: doctor and launcher agree, and the opening has those words.
void Check(std::span<const Fault> faults);
void Check(std::span<const SettingsFault> faults);

/// Whether this process may become a user without any rights who can start the built programs.
[[nodiscard]] bool ThereIsAnOrdinaryUser();

/// Doctor and launcher are started by that user, who may enter the product's folders.
void AsOrdinaryUser(KnownWorld& world);

}  // namespace tests

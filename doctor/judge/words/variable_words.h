// What the runtime and the dynamic loader make of their variables, in a few words.
#pragma once

#include <string_view>

namespace doctor {

/// What the variable does in a launch; words for all of its kind where it is not a known one. Empty for one that
/// neither obeys.
std::string_view VariableWords(std::string_view name);

/// Whether it is one of those that are known by name. The value of another one may be a secret.
bool IsKnownVariable(std::string_view name);

}  // namespace doctor

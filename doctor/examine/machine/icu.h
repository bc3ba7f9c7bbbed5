// ICU, by which .NET knows languages, and which it ends without as soon as it needs it.
#pragma once

#include <string>

#include "doctor/child/patience.h"
#include "doctor/examine/config/runtime_config.h"

namespace doctor {

/// Whether the runtime is made to do without ICU: by the environment, or else by the file.
bool IsInvariant(const IcuSettings& settings);

/// Whether a child process can load ICU as the runtime does: the one that comes with the application in `folder` where
/// the settings say so, else any version that the dynamic loader finds. Taken for there when the child does not
/// answer.
bool HasIcu(const IcuSettings& settings, const std::string& folder, const Patience& patience);

}  // namespace doctor

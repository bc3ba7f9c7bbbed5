// A broken file in words.
#pragma once

#include "doctor/examine/broken_file.h"
#include "doctor/judge/near_misses/checks.h"

namespace doctor {

/// The clue to the file, with its `{name}`, `{state}` and `{folder}`, and the `{command}` that mends it.
Clue AtBrokenFile(const BrokenFile& file);

}  // namespace doctor

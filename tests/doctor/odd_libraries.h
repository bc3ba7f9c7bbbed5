// Libraries that misbehave while they are loaded.
#pragma once

#include <filesystem>

namespace tests {

enum class Oddity { kSegmentationFault, kBusError, kThrows, kThrowsNumber, kExits, kHangs, kTalks };

/// The built library. The one that exits does so with 17; the one that throws has the text "no mood to be loaded".
[[nodiscard]] std::filesystem::path OddLibrary(Oddity oddity);

}  // namespace tests

// Built hosts that misbehave in one place.
#pragma once

#include <filesystem>
#include <string_view>

namespace tests {

/// The library of a variant: "comes_" and a deed while it is loaded, "prepares_" and a deed while it initialises,
/// "lacks_and_goes_" and "refuses_and_goes_" and a deed while it is unloaded. The one that exits does so with 17; the
/// one that throws has the text "no mood to be loaded". The one that leaves a file does so in the current folder. And
/// "closes_all", which closes all descriptors whenever it is called.
[[nodiscard]] std::filesystem::path OddHost(std::string_view variant);

}  // namespace tests

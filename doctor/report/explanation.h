// What is to be said of a finding by its code alone, without a machine at hand.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace doctor {

/// What the code stands for, how it comes about and what mends it, `width` columns wide. What a report would have found
/// is named in capitals. Nothing for a code that no finding has.
std::optional<std::string> Explanation(std::string_view code, std::size_t width);

/// The three codes that are spelt most like it, the best one first. Those that contain it come before all others.
std::vector<std::string_view> NearestCodes(std::string_view code);

/// All codes, one in each line.
std::string AllCodes();

}  // namespace doctor

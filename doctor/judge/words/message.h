// Messages whose words are fixed and whose values are found.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace doctor {

/// Values by the name that a message has for them.
using Values = std::map<std::string_view, std::string>;

/// The message with each `{name}` replaced by its value. A name without a value stays as it is.
std::string Filled(std::string_view message, const Values& values);

}  // namespace doctor

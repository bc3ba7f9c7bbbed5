// Becoming the user whose launch is asked about.
#pragma once

#include <string>

namespace doctor {

/// Takes on the user's number, groups and rights, and the variables that a login sets. Nothing of root is left. Returns
/// why it cannot, in words; an empty text when it has.
std::string Become(const std::string& user);

}  // namespace doctor

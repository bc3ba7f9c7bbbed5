// A launch whose lines can be seen.
#pragma once

namespace tests {

/// How often the empty logger was to be installed. In an executable that links this, it never is: the call goes
/// elsewhere and the logger that a test has installed stays.
[[nodiscard]] int EmptyLoggersInstalled();

}  // namespace tests

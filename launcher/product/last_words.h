// The one line that a launch writes before it aborts.
#pragma once

namespace launcher {

/// The line without its end, in two pieces, so that no memory is needed to write it.
struct LastWords {
  const char* head;
  const char* what;  ///< Lives as long as the exception's own text.
};

/// After a `std::exception` with that text.
constexpr LastWords LastWordsAfterException(const char* what) {
  return {"Error occurred: ", what};
}

/// After anything else that was thrown.
inline constexpr LastWords kLastWordsAfterAnythingElse = {"Unknown failure occurred", ""};

}  // namespace launcher

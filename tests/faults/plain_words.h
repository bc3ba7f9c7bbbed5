// Words without memory: what is linked into a process that has none, or whose calls are made to fail.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>
#include <string_view>

namespace tests {

/// Writes one line to that descriptor. Allocates nothing; what cannot be written is lost.
inline void SayPlainly(int descriptor, std::initializer_list<std::string_view> words) {
  char line[4096];
  std::size_t length = 0;
  for (const std::string_view word : words) {
    length += word.copy(line + length, sizeof line - 1 - length);
  }
  line[length++] = '\n';
  static_cast<void>(::write(descriptor, line, length) == 0);
}

/// Says on that descriptor of each other open one, behind the standard streams, that it is.
inline void SayWhatIsOpen(int descriptor) {
  constexpr int kMost = 20;
  for (int open = STDERR_FILENO + 1; open < kMost; ++open) {
    if (open != descriptor && ::fcntl(open, F_GETFD) >= 0) {
      const char digits[] = {static_cast<char>('0' + open / 10), static_cast<char>('0' + open % 10)};
      SayPlainly(descriptor, {"open descriptor ", {digits, sizeof digits}});
    }
  }
}

}  // namespace tests

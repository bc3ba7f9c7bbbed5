// Streams of the C library that fail where a test wants them to.
#pragma once

#include <string>

namespace tests {

/// While it lives, the file at `path` cannot be opened, for the reason `error`.
class UnopenableFile {
 public:
  UnopenableFile(std::string path, int error);
  ~UnopenableFile();
  UnopenableFile(const UnopenableFile&) = delete;
  UnopenableFile& operator=(const UnopenableFile&) = delete;
};

/// While it lives, reading the file at `path` gives `text`, and then the failure `error`.
class BrokenFile {
 public:
  BrokenFile(std::string path, std::string text, int error);
  ~BrokenFile();
  BrokenFile(const BrokenFile&) = delete;
  BrokenFile& operator=(const BrokenFile&) = delete;
};

/// Lets the next `succeeding` lines be read; there is no memory for the one after them.
class NoMemoryForLine {
 public:
  explicit NoMemoryForLine(int succeeding);
  ~NoMemoryForLine();
  NoMemoryForLine(const NoMemoryForLine&) = delete;
  NoMemoryForLine& operator=(const NoMemoryForLine&) = delete;
};

}  // namespace tests

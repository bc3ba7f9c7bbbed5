#include "tests/netloader/logger/log_file.h"

#include <regex>

namespace tests {

std::string LogText(const std::filesystem::path& file) {
  const std::regex stamp(R"((^|\n)\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\t)");
  return std::regex_replace(ReadFile(file), stamp, "$1TIME\t");
}

std::string FirstLine(const std::filesystem::path& file) {
  return "TIME\tINFRA\tLog has been created with name: " + file.string() + "\n";
}

}  // namespace tests

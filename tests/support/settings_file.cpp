#include "tests/support/settings_file.h"

#include <stdexcept>
#include <string>
#include <system_error>

#include "tests/support/temp_folder.h"

namespace tests {

namespace fs = std::filesystem;

SettingsFile::SettingsFile(std::string_view bytes) {
  if (fs::exists(kSettingsPath)) {
    throw std::runtime_error("not replacing the settings that are there: " + std::string(kSettingsPath));
  }
  Write(bytes);
}

SettingsFile SettingsFile::ForRoot(const fs::path& root) {
  return SettingsFile("DotnetRootFolder=" + root.string() + "\n");
}

SettingsFile::~SettingsFile() {
  std::error_code ignored;
  fs::remove(kSettingsPath, ignored);
}

void SettingsFile::Write(std::string_view bytes) {
  WriteFile(kSettingsPath, bytes);
}

}  // namespace tests

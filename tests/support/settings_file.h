// The product's settings file, at its fixed place. For sandbox tests only.
#pragma once

#include <filesystem>
#include <string_view>

namespace tests {

/// The one path that the product reads its settings from.
inline constexpr std::string_view kSettingsPath = "/var/opt/morvath/quor/common/dotnet_settings.ini";

/// The settings file while it lives; removed when destroyed. Refuses to replace a file that it did not write, so that
/// no machine loses its settings to a test that runs outside of the sandbox.
class SettingsFile {
 public:
  /// Writes exactly these bytes.
  explicit SettingsFile(std::string_view bytes);
  /// Writes the one line that names the runtime's root folder.
  static SettingsFile ForRoot(const std::filesystem::path& root);
  ~SettingsFile();
  SettingsFile(const SettingsFile&) = delete;
  SettingsFile& operator=(const SettingsFile&) = delete;

  /// Replaces the bytes.
  void Write(std::string_view bytes);
};

}  // namespace tests

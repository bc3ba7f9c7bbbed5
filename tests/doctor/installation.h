// The product installed beside a runtime, all at fixed paths. For sandbox tests only.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/odd_host.h"
#include "tests/support/stand_in_host.h"

namespace tests {

/// The runtime's root, and the host/fxr folder in it.
inline constexpr std::string_view kRoot = "/opt/morvath/dotnet";
inline constexpr std::string_view kFxrFolder = "/opt/morvath/dotnet/host/fxr";
/// The application's files, up to the extension.
inline constexpr std::string_view kApplication = "/opt/morvath/quor/lib64/grellin_utils";

/// What lies in the product's folders while it lives; empties them when destroyed. Every function replaces what is
/// there and throws when it cannot.
class Installation {
 public:
  /// Nothing at all.
  Installation();
  ~Installation();
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;

  /// Settings, a runtime 6.0.36 with its framework, and the application: a launch would run.
  Installation& Healthy();
  Installation& Settings(std::string_view bytes);
  Installation& NoSettings();
  Installation& Application();
  Installation& Framework(std::string_view version);
  Installation& Host(std::string_view version, HostVariant variant = HostVariant::kWhole);
  Installation& OddHost(std::string_view version, std::string_view variant);
  Installation& HostOfBytes(std::string_view version, std::string_view bytes);
  Installation& Remove(const std::filesystem::path& path);

  [[nodiscard]] static std::filesystem::path HostFile(std::string_view version);
};

/// 120 bytes of a library for this machine whose one segment would end at byte 4096.
[[nodiscard]] std::string CutLibrary();
/// The beginning of a library for 64-bit ARM.
[[nodiscard]] std::string ArmLibrary();

}  // namespace tests

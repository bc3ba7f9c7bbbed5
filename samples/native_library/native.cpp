// A library that the application loads. It calls the launcher in whose process it runs: what it does not find itself,
// the dynamic loader finds among the launcher's exported functions.
#include <cstdio>
#include <string>

#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"
#include "netloader/utils/path_utils.h"

namespace {

// For names that are known to be ASCII.
std::string Narrow(const tov::WideString& text) {
  return {text.begin(), text.end()};
}

}  // namespace

/// Writes where the settings were read from, and the runtime root that they name.
extern "C" void ShowSettings() {
  auto& settings = netloader::quor::DotnetSettingsProvider::GetInstance();
  const tov::WideString root = settings.GetValue(u"DotnetRootFolder");
  std::printf("%s: %s, %s\n", Narrow(settings.GetSettingsSource()).c_str(), Narrow(root).c_str(),
              netloader::utils::CheckIsValidPath(root) ? "absolute" : "relative");
  std::fflush(stdout);
}

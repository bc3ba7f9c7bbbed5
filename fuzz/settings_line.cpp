// A settings file of any bytes: every line is skipped, or is its key, "=", and its value.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <typeinfo>

#include "foundation/cast.h"
#include "fuzz/require.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

namespace detail = netloader::quor::detail;
using tov::text::Cast;

namespace {

// NOLINTNEXTLINE(cppcoreguidelines-virtual-class-destructor): no listener is destroyed through its base.
class Checker final : public detail::SettingsListener {
 public:
  void Skips(std::string_view line) override {
    Require(line.find('=') == std::string_view::npos || line[0] == '=');
    read_.append(line) += '\n';
  }

  void Takes(std::string_view line, const detail::SettingsLine& parsed) override {
    Require(!parsed.key.empty() && parsed.key.find('=') == std::string_view::npos);
    Require(line == std::string(parsed.key) + "=" + std::string(parsed.value));
    read_.append(line) += '\n';
  }

  void Stores(const detail::SettingsPair& pair, bool /*replaces*/) override {
    Require(read_.ends_with(Cast<std::string>(pair.key) + "=" + Cast<std::string>(pair.value) + "\n"));
  }

  const std::string& Read() const { return read_; }

 private:
  std::string read_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  static const int memory = ::memfd_create("settings", 0);
  Require(::ftruncate(memory, 0) == 0);
  Require(::pwrite(memory, data, size, 0) == static_cast<ssize_t>(size));
  Checker checker;
  netloader::quor::DotnetSettingsProvider provider("/proc/self/fd/" + std::to_string(memory), checker);

  try {
    provider.LoadSettingsFromFile();
    Require(checker.Read() == bytes || checker.Read() == bytes + '\n');
  } catch (const std::bad_cast&) {  // The load ends at the first line that is not UTF-8.
    Require((bytes + '\n').starts_with(checker.Read()));
  }
  return 0;
}

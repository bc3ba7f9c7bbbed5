// A settings file of any bytes: every line is skipped, or is its key, "=", and its value.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>

#include "foundation/cast.h"
#include "fuzz/require.h"
#include "netloader/netloaderquorcommon/src/settings_file.h"

using netloader::quor::SettingsLine;
using tov::text::Cast;

namespace {

void Check(std::string_view line, const std::optional<SettingsLine>& parsed) {
  Require(parsed.has_value() == (line.find('=') != std::string_view::npos && line[0] != '='));
  if (!parsed) {
    return;
  }
  Require(!parsed->key.empty() && parsed->key.find('=') == std::string_view::npos);
  Require(line == std::string(parsed->key) + "=" + std::string(parsed->value));
  try {
    const auto [key, value] = netloader::quor::DecodeSettingsLine(*parsed);
    Require(Cast<std::string>(key) == parsed->key && Cast<std::string>(value) == parsed->value);
    Require(value.starts_with(netloader::quor::SettingsPath(value)));
  } catch (const std::bad_cast&) {
    return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  static const int memory = ::memfd_create("settings", 0);
  Require(::ftruncate(memory, 0) == 0);
  Require(::pwrite(memory, data, size, 0) == static_cast<ssize_t>(size));
  netloader::quor::SettingsFile file("/proc/self/fd/" + std::to_string(memory));
  Require(file.IsOpen());
  std::string read;

  netloader::quor::ForEachSettingsLine(file, [&read](std::string_view line, const auto& parsed) {
    read.append(line) += '\n';
    Check(line, parsed);
  });

  Require(read == bytes || read == bytes + '\n');
  return 0;
}

// Lines of the settings file.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "foundation/cast.h"
#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"
#include "netloader/netloaderquorcommon/src/settings_map.h"

namespace {

using netloader::quor::detail::ParseSettingsLine;
using netloader::quor::detail::SettingsMap;
using netloader::quor::detail::SettingsPair;
using tov::WideString;
using tov::text::Cast;

constexpr std::string_view kLine = "Setting123=value 123";

void ParseLine(benchmark::State& state) {
  std::string_view line = kLine;
  for (auto _ : state) {
    benchmark::DoNotOptimize(line);
    benchmark::DoNotOptimize(ParseSettingsLine(line));
  }
}
BENCHMARK(ParseLine);

// What a line costs in all but the reading of the file: parsed, converted and stored among as many others.
void StoreLine(benchmark::State& state) {
  SettingsMap settings;
  for (int other = 0; other < state.range(0); ++other) {
    settings.Store({Cast<WideString>("Setting" + std::to_string(other)), u"value"});
  }
  SettingsPair pair;
  for (auto _ : state) {
    const auto parsed = ParseSettingsLine(kLine);
    tov::text::CastInto(pair.key, parsed->key);
    tov::text::CastInto(pair.value, parsed->value);
    settings.Store(pair);
  }
}
BENCHMARK(StoreLine)->Arg(10)->Arg(1'000)->Arg(100'000);

}  // namespace

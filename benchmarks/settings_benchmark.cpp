// Lines of the settings file.
#include <benchmark/benchmark.h>

#include <map>
#include <memory_resource>
#include <string>
#include <string_view>

#include "foundation/cast.h"
#include "foundation/code_unit_less.h"
#include "foundation/strings.h"
#include "netloader/netloaderquorcommon/src/settings_line.h"

namespace {

using netloader::quor::ParseSettingsLine;
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
  std::pmr::monotonic_buffer_resource memory;
  std::pmr::map<WideString, WideString, tov::CodeUnitLess> settings(&memory);
  for (int other = 0; other < state.range(0); ++other) {
    settings.emplace(Cast<WideString>("Setting" + std::to_string(other)), u"value");
  }
  for (auto _ : state) {
    const auto parsed = ParseSettingsLine(kLine);
    settings.insert_or_assign(Cast<WideString>(parsed->key), Cast<WideString>(parsed->value));
  }
}
BENCHMARK(StoreLine)->Arg(10)->Arg(1'000)->Arg(100'000);

}  // namespace

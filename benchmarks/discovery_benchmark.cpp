// Finding the runtime hosts, ordering them, looking at one.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/cast.h"
#include "netloader/netloaderhostfxr/src/elf_check.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"
#include "netloader/netloaderhostfxr/src/version_order.h"
#include "tests/support/runtime_tree.h"

namespace {

using tov::WideString;

std::string Version(std::int64_t number) {
  return "6.0." + std::to_string(number);
}

void DiscoverVersions(benchmark::State& state) {
  tests::RuntimeTree runtime;
  for (std::int64_t number = 0; number < state.range(0); ++number) {
    runtime.AddHostOfBytes(Version(number), "any");
  }
  const auto root = tov::text::Cast<WideString>(runtime.Root().native());
  for (auto _ : state) {
    benchmark::DoNotOptimize(netloader::DiscoverVersions(root, u"6.0.", u"libhostfxr.so"));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(DiscoverVersions)->Arg(3)->Arg(100)->Arg(500);

void NewestFirst(benchmark::State& state) {
  constexpr std::int64_t kStride = 7919;  // Prime, so that the versions come in no order and none comes twice.
  std::vector<WideString> versions;
  for (std::int64_t index = 0; index < state.range(0); ++index) {
    versions.push_back(tov::text::Cast<WideString>(Version(index * kStride % state.range(0))));
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(netloader::NewestFirst(versions, u"6.0."));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(NewestFirst)->Arg(3)->Arg(100)->Arg(500);

void CheckElf(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(netloader::CheckElf(QUIET_HOST));
  }
}
BENCHMARK(CheckElf);

}  // namespace

// Conversions and result codes.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "foundation/cast.h"
#include "foundation/convert_to_container.h"
#include "foundation/result_code.h"

namespace {

using tov::WideString;
using tov::text::Cast;

// A path of ordinary length, in letters of one, two and four bytes.
constexpr std::string_view kTexts[] = {
    "/usr/share/dotnet/host/fxr/6.0.36/libhostfxr.so",
    "/usr/шара/дотнет/хост/фхр/6.0.36/либхостфхр.so",
    "/usr/😀😀😀/😀😀😀/😀😀/😀😀/6.0.36/libhostfxr.so",
};

const std::string_view& Text(const benchmark::State& state) {
  return kTexts[static_cast<std::size_t>(state.range(0))];
}

void CastToWide(benchmark::State& state) {
  const std::string_view text = Text(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Cast<WideString>(text));
  }
}
BENCHMARK(CastToWide)->DenseRange(0, 2);

void CastToNarrow(benchmark::State& state) {
  const auto text = Cast<WideString>(Text(state));
  for (auto _ : state) {
    benchmark::DoNotOptimize(Cast<std::string>(text));
  }
}
BENCHMARK(CastToNarrow)->DenseRange(0, 2);

void LenientToNarrow(benchmark::State& state) {
  const auto text = Cast<WideString>(Text(state));
  for (auto _ : state) {
    tov::NarrowString narrow;
    benchmark::DoNotOptimize(tov::text::Utf16ToUtf8::Do(text, narrow, 0));
    benchmark::DoNotOptimize(narrow);
  }
}
BENCHMARK(LenientToNarrow)->DenseRange(0, 2);

void ResultCodeText(benchmark::State& state) {
  const auto code = static_cast<int>(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(tov::ResultCodeMessage(code));
  }
}
BENCHMARK(ResultCodeText)
    ->Arg(tov::result_code::kNoError)
    ->Arg(tov::result_code::kNoResultCode)
    ->Arg(tov::result_code::FromBits(0x80010002))
    ->Arg(tov::result_code::FromBits(0xFFFFFFFF));

void ResultCodeOfErrno(benchmark::State& state) {
  unsigned int value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(tov::posix::ResultCodeFromSystemError(value));
    value = (value + 1) % 134;
  }
}
BENCHMARK(ResultCodeOfErrno);

}  // namespace

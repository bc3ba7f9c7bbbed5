// A log line that nobody reads, written in two ways.
#include <benchmark/benchmark.h>

#include "foundation/stream_output.h"
#include "foundation/strings.h"
#include "netloader/logger/log.h"
#include "netloader/logger/logger_wrapper.h"
#include "netloader/logger/wide_text_output.h"

namespace {

using enum netloader::logger::LogLevel;
using ::operator<<;
using tov::types::operator<<;

const tov::WideString kPath = u"/usr/share/dotnet/host/fxr/6.0.36/libhostfxr.so";

void LogToTheEmptyLogger(benchmark::State& state) {
  netloader::logger::InitEmptyLogger();
  for (auto _ : state) {
    netloader::logger::Log(TRACE, L"LoaderModule: Failed to load fxr: '", kPath, L"'");
    benchmark::ClobberMemory();
  }
}
BENCHMARK(LogToTheEmptyLogger);

void StreamToTheEmptyLogger(benchmark::State& state) {
  netloader::logger::InitEmptyLogger();
  for (auto _ : state) {
    netloader::logger::LoggerWrapper(TRACE).stream << L"LoaderModule: Failed to load fxr: '" << kPath << L"'";
  }
}
BENCHMARK(StreamToTheEmptyLogger);

}  // namespace

#include "doctor/judge/words/variable_words.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

namespace doctor {
namespace {

// The first row whose name fits; one that ends with `*` fits all that begin so. The runtime knows each `DOTNET_` name
// with `COMPlus_` in its place as well.
struct KnownVariable {
  std::string_view name;
  std::string_view words;
};

constexpr auto kKnownVariables = std::to_array<KnownVariable>({
    {"LD_PRELOAD", "loads libraries into the process before all others"},
    {"LD_AUDIT", "loads libraries that watch the dynamic loader"},
    {"LD_LIBRARY_PATH", "is searched for libraries before the system's folders"},
    {"LD_DEBUG*", "has the dynamic loader write what it does"},
    {"LD_BIND_NOW", "has every symbol bound when a library is loaded"},
    {"CORECLR_ENABLE_PROFILING", "turns on the profiler that CORECLR_PROFILER_PATH names"},
    {"CORECLR_PROFILER_PATH*", "names a library that is loaded as profiler"},
    {"CORECLR_PROFILER", "identifies the profiler"},
    {"COREHOST_TRACE*", "has the host write what it does"},
    {"DOTNET_ROOT*", "names an installation to other programs; a launch does not look at it"},
    {"DOTNET_CLI_*", "is for the dotnet command; a launch does not look at it"},
    {"DOTNET_NOLOGO", "is for the dotnet command; a launch does not look at it"},
    {"DOTNET_GENERATE_ASPNET_CERTIFICATE", "is for the dotnet command; a launch does not look at it"},
    {"DOTNET_ADDITIONAL_DEPS", "adds assemblies to the application's"},
    {"DOTNET_SHARED_STORE", "adds folders that assemblies are looked for in"},
    {"DOTNET_ROLL_FORWARD*", "changes which version of a framework is taken"},
    {"DOTNET_gcServer", "chooses the garbage collector for servers"},
    {"DOTNET_gcConcurrent", "has the garbage collector work beside the application, or not"},
    {"DOTNET_GCHeapHardLimit*", "limits the memory of the garbage collector"},
    {"DOTNET_GCHeapCount", "sets how many heaps the garbage collector has"},
    {"DOTNET_GCPath", "names a library that is loaded as garbage collector"},
    {"DOTNET_GC*", "changes how the garbage collector works"},
    {"DOTNET_SYSTEM_GLOBALIZATION_INVARIANT", "has the application do without ICU and cultures"},
    {"DOTNET_SYSTEM_NET_*", "changes how .NET uses the network"},
    {"DOTNET_SYSTEM_*", "changes how a .NET library works"},
    {"DOTNET_Tiered*", "changes when code is compiled again to run faster"},
    {"DOTNET_TC_*", "changes when code is compiled again to run faster"},
    {"DOTNET_ReadyToRun*", "has compiled code used or ignored"},
    {"DOTNET_EnableWriteXorExecute", "has code memory writable and executable at once when 0"},
    {"DOTNET_DbgEnableMiniDump", "has a crash write a dump"},
    {"DOTNET_DbgMiniDump*", "says what a dump holds and where it goes"},
    {"DOTNET_EnableEventPipe", "has the runtime write a trace of itself"},
    {"DOTNET_EventPipe*", "says what a trace holds and where it goes"},
    {"DOTNET_DiagnosticPorts", "has the runtime connect to a debugger or profiler"},
    {"DOTNET_LTTng", "has the runtime write events for LTTng"},
    {"DOTNET_ThreadPool_*", "changes how many threads the application has"},
    {"DOTNET_RUNNING_IN_CONTAINER", "says that this is a container"},
});

constexpr auto kKinds = std::to_array<KnownVariable>({
    {"LD_*", "changes how the dynamic loader works"},
    {"CORECLR_*", "changes how the runtime works"},
    {"COREHOST_*", "changes how the host works"},
    {"DOTNET_*", "changes how the runtime works"},
});

bool Fits(std::string_view name, std::string_view row) {
  return row.ends_with('*') ? name.starts_with(row.substr(0, row.size() - 1)) : name == row;
}

std::string_view WordsIn(std::span<const KnownVariable> rows, const std::string& name) {
  const auto row = std::ranges::find_if(rows, [&](const KnownVariable& each) { return Fits(name, each.name); });
  return row != rows.end() ? row->words : std::string_view();
}

std::string WithPresentPrefix(std::string_view name) {
  constexpr std::string_view kOldPrefix = "COMPlus_";
  return name.starts_with(kOldPrefix) ? "DOTNET_" + std::string(name.substr(kOldPrefix.size())) : std::string(name);
}

}  // namespace

bool IsKnownVariable(std::string_view name) {
  return !WordsIn(kKnownVariables, WithPresentPrefix(name)).empty();
}

std::string_view VariableWords(std::string_view name) {
  const std::string present = WithPresentPrefix(name);
  const std::string_view words = WordsIn(kKnownVariables, present);
  return words.empty() ? WordsIn(kKinds, present) : words;
}

}  // namespace doctor

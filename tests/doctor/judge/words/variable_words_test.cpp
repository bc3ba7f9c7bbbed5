#include "doctor/judge/words/variable_words.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

struct VariableRow {
  const char* name;
  const char* words;
};

// Each name as people write it; where a row covers more than one, one of them.
const VariableRow kKnown[] = {
    {"LD_PRELOAD", "loads libraries into the process before all others"},
    {"LD_AUDIT", "loads libraries that watch the dynamic loader"},
    {"LD_LIBRARY_PATH", "is searched for libraries before the system's folders"},
    {"LD_DEBUG_OUTPUT", "has the dynamic loader write what it does"},
    {"LD_BIND_NOW", "has every symbol bound when a library is loaded"},
    {"CORECLR_ENABLE_PROFILING", "turns on the profiler that CORECLR_PROFILER_PATH names"},
    {"CORECLR_PROFILER_PATH_64", "names a library that is loaded as profiler"},
    {"CORECLR_PROFILER", "identifies the profiler"},
    {"COREHOST_TRACEFILE", "has the host write what it does"},
    {"DOTNET_ROOT_X64", "names an installation to other programs; a launch does not look at it"},
    {"DOTNET_CLI_HOME", "is for the dotnet command; a launch does not look at it"},
    {"DOTNET_NOLOGO", "is for the dotnet command; a launch does not look at it"},
    {"DOTNET_GENERATE_ASPNET_CERTIFICATE", "is for the dotnet command; a launch does not look at it"},
    {"DOTNET_ADDITIONAL_DEPS", "adds assemblies to the application's"},
    {"DOTNET_SHARED_STORE", "adds folders that assemblies are looked for in"},
    {"DOTNET_ROLL_FORWARD_TO_PRERELEASE", "changes which version of a framework is taken"},
    {"DOTNET_gcServer", "chooses the garbage collector for servers"},
    {"DOTNET_gcConcurrent", "has the garbage collector work beside the application, or not"},
    {"DOTNET_GCHeapHardLimitPercent", "limits the memory of the garbage collector"},
    {"DOTNET_GCHeapCount", "sets how many heaps the garbage collector has"},
    {"DOTNET_GCPath", "names a library that is loaded as garbage collector"},
    {"DOTNET_GCgen0size", "changes how the garbage collector works"},
    {"DOTNET_SYSTEM_GLOBALIZATION_INVARIANT", "has the application do without ICU and cultures"},
    {"DOTNET_SYSTEM_NET_HTTP_SOCKETSHTTPHANDLER_HTTP2SUPPORT", "changes how .NET uses the network"},
    {"DOTNET_SYSTEM_IO_DISABLEFILELOCKING", "changes how a .NET library works"},
    {"DOTNET_TieredPGO", "changes when code is compiled again to run faster"},
    {"DOTNET_TC_QuickJitForLoops", "changes when code is compiled again to run faster"},
    {"DOTNET_ReadyToRun", "has compiled code used or ignored"},
    {"DOTNET_EnableWriteXorExecute", "has code memory writable and executable at once when 0"},
    {"DOTNET_DbgEnableMiniDump", "has a crash write a dump"},
    {"DOTNET_DbgMiniDumpName", "says what a dump holds and where it goes"},
    {"DOTNET_EnableEventPipe", "has the runtime write a trace of itself"},
    {"DOTNET_EventPipeOutputPath", "says what a trace holds and where it goes"},
    {"DOTNET_DiagnosticPorts", "has the runtime connect to a debugger or profiler"},
    {"DOTNET_LTTng", "has the runtime write events for LTTng"},
    {"DOTNET_ThreadPool_ForceMinWorkerThreads", "changes how many threads the application has"},
    {"DOTNET_RUNNING_IN_CONTAINER", "says that this is a container"},
};

TEST(VariableWords, SayWhatEachKnownVariableDoes) {
  for (const auto& [name, words] : kKnown) {
    EXPECT_TRUE(IsKnownVariable(name)) << name;
    EXPECT_EQ(VariableWords(name), words) << name;
  }
}

// What only begins like a known name is another variable.
TEST(VariableWords, TakeANameAsAWhole) {
  EXPECT_FALSE(IsKnownVariable("LD_PRELOADED"));
  EXPECT_FALSE(IsKnownVariable("DOTNET_gcServers"));
  EXPECT_FALSE(IsKnownVariable("DOTNET_NOLOGOS"));
}

TEST(VariableWords, KnowTheOldPrefixOfTheRuntime) {
  EXPECT_EQ(VariableWords("COMPlus_gcServer"), VariableWords("DOTNET_gcServer"));
  EXPECT_NE(VariableWords("COMPlus_gcServer"), VariableWords("COMPlus_Other"));
}

TEST(VariableWords, SayWhatTheKindOfAnUnknownOneDoes) {
  EXPECT_EQ(VariableWords("LD_X"), "changes how the dynamic loader works");
  EXPECT_EQ(VariableWords("DOTNET_X"), "changes how the runtime works");
  EXPECT_EQ(VariableWords("COMPlus_X"), "changes how the runtime works");
  EXPECT_EQ(VariableWords("CORECLR_X"), "changes how the runtime works");
  EXPECT_EQ(VariableWords("COREHOST_X"), "changes how the host works");
  EXPECT_EQ(VariableWords("PATH"), "");
}

TEST(VariableWords, TellKnownOnesFromThoseThatMayHoldASecret) {
  EXPECT_TRUE(IsKnownVariable("LD_LIBRARY_PATH"));
  EXPECT_TRUE(IsKnownVariable("COMPlus_GCHeapCount"));
  EXPECT_FALSE(IsKnownVariable("DOTNET_Password"));
  EXPECT_FALSE(IsKnownVariable("PATH"));
}

}  // namespace
}  // namespace doctor

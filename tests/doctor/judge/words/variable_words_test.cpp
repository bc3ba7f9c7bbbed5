#include "doctor/judge/words/variable_words.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

TEST(VariableWords, SayWhatAKnownVariableDoes) {
  EXPECT_EQ(VariableWords("LD_PRELOAD"), "loads libraries into the process before all others");
  EXPECT_EQ(VariableWords("DOTNET_GCPath"), "names a library that is loaded as garbage collector");
  EXPECT_EQ(VariableWords("CORECLR_PROFILER_PATH_64"), "names a library that is loaded as profiler");
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

#include "doctor/judge/start_cause.h"

#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

constexpr auto kInitFailure = static_cast<std::int32_t>(0x80008089);

StartReport Started() {
  return {{{ChildEnd::kFinished}, true, 0}};
}

// A runtime that reports its failure through the host.
StartReport Failed(const std::string& result) {
  return {{{ChildEnd::kFinished}, true, kInitFailure, "Failed to create CoreCLR, HRESULT: " + result + "\n"}};
}

StartReport Died(int signal) {
  return {{{ChildEnd::kCrashed, signal}}};
}

std::string Text(const StartReport& start) {
  const auto cause = CauseOf(start);
  return cause ? cause->text : "";
}

TEST(StartCause, ARuntimeThatStartsHasNone) {
  StartReport limited = Started();
  limited.surroundings.may_execute_written_memory = false;
  limited.surroundings.open_files = 20;

  EXPECT_EQ(Text(Started()), "");
  EXPECT_EQ(Text(limited), "") << "what might have stood in the way did not";
}

TEST(StartCause, AStartThatWasNotTriedHasNone) {
  EXPECT_EQ(Text({{{ChildEnd::kFinished}}}), "");
}

TEST(StartCause, ANeededFileThatIsBrokenIsTheCauseWhereStartingWasNotTried) {
  StartReport start = Started();
  start.probe.was_tried = false;
  start.broken = {{"/net/6.0.36/libclrjit.so", Need::kStart, true, false, false, "missing"}};

  const auto cause = CauseOf(start);

  ASSERT_TRUE(cause);
  EXPECT_EQ(cause->text, "libclrjit.so is missing");
  EXPECT_EQ(cause->meaning, "/net/6.0.36 is not as it was installed.");
  EXPECT_EQ(cause->cure, "install the .NET runtime 6.0.36 again");
}

TEST(StartCause, AFileThatIsThereAndNotListedIsToldSo) {
  StartReport start = Started();
  start.broken = {{"/opt/product/part.dll", Need::kMain, true, false, true, "not listed in the list", true, false}};

  const auto cause = CauseOf(start);

  ASSERT_TRUE(cause);
  EXPECT_EQ(cause->text, "part.dll is not listed in the list");
  EXPECT_EQ(cause->cure, "install the product again");
}

TEST(StartCause, AFileThatMayBeNeededLaterIsNone) {
  StartReport start = Started();
  start.broken = {{"/net/6.0.36/System.Linq.dll", Need::kLater, true, false, false, "missing"}};

  EXPECT_EQ(Text(start), "");
}

TEST(StartCause, OfAStartThatFailsOnlyAFileThatStartingTakesIsTheCause) {
  StartReport start = Failed("0x8007000E");
  start.surroundings.address_space = 64 * 1024 * 1024;
  start.broken = {{"/net/6.0.36/System.Runtime.dll", Need::kMain, true, false, false, "missing"}};
  EXPECT_EQ(Text(start), "the address space is limited to 64 MiB, which is too little for .NET");

  start.broken.insert(start.broken.begin(), {"/net/6.0.36/libcoreclr.so", Need::kStart, true, false, false, "missing"});
  EXPECT_EQ(Text(start), "libcoreclr.so is missing");
}

TEST(StartCause, WhatDidNotFinishIsNotExplained) {
  StartReport start{{{ChildEnd::kTimedOut}}};
  start.surroundings.open_files = 10;
  start.broken = {{"/net/6.0.36/libcoreclr.so", Need::kStart, true, false, false, "missing"}};

  EXPECT_EQ(CauseOf(start)->finding, Finding::kStartNotFinished);
}

TEST(StartCause, AnApplicationThatMayNotBeReadIsMadeReadableForThisUser) {
  const tests::TempFolder folder;
  tests::WriteFile(folder / "own.dll", "");
  struct Row {
    std::string path;
    std::string cure;
  };
  const Row rows[] = {{folder / "own.dll", "chmod u+r "}, {"/product/others.dll", "chmod o+r "}};
  for (const Row& row : rows) {
    StartReport start = Started();
    start.broken = {{row.path, Need::kMain, false, false, true, "Permission denied"}};

    EXPECT_TRUE(Text(start).ends_with(".dll cannot be read by this user"));
    EXPECT_EQ(CauseOf(start)->cure, row.cure + row.path);
  }
}

TEST(StartCause, SurroundingsExplainAStartThatFails) {
  struct Row {
    const char* text;
    StartReport start;
    void (*surround)(Surroundings& surroundings);
  };
  const Row rows[] = {
      {"this process may not have memory that is first written and then executed, which .NET needs", Died(SIGSEGV),
       [](Surroundings& around) { around.may_execute_written_memory = false; }},
      {"the kernel gives no files in memory (memfd_create), which .NET keeps its code in", Failed("0x80004005"),
       [](Surroundings& around) { around.has_memory_files = false; }},
      {"the garbage collector cannot be started with DOTNET_GCHeapHardLimit=10", Failed("0x8007000E"),
       [](Surroundings& around) {
         around.collector_variables = {{"DOTNET_GCHeapHardLimit", "10"}};
       }},
      {"the garbage collector cannot be started with DOTNET_GCPath=/none", Failed("0x8007007E"),
       [](Surroundings& around) {
         around.collector_variables = {{"DOTNET_GCPath", "/none"}};
       }},
      {"the garbage collector cannot be started with DOTNET_GCRegionSize=1", Failed("0x8013200F"),
       [](Surroundings& around) {
         around.collector_variables = {{"DOTNET_GCRegionSize", "1"}};
       }},
      {"the garbage collector cannot be started with DOTNET_GCHeapHardLimit=10, DOTNET_GCPath=/none",
       Failed("0x8007000E"),
       [](Surroundings& around) {
         around.collector_variables = {{"DOTNET_GCHeapHardLimit", "10"}, {"DOTNET_GCPath", "/none"}};
       }},
      {"the runtime's compiler cannot be loaded with DOTNET_AltJit=*", Died(SIGABRT),
       [](Surroundings& around) {
         around.compiler_variables = {{"DOTNET_AltJit", "*"}};
       }},
      {"no thread can be started, and .NET needs several", Failed("0x80070008"), [](Surroundings&) {}},
      {"a file may not be larger than 1 MiB, which is too little for .NET", Failed("0x8007000E"),
       [](Surroundings& around) { around.file_size = 1024 * 1024; }},
      {"a file may not be larger than 100 KiB, which is too little for .NET", Died(SIGSEGV),
       [](Surroundings& around) { around.file_size = 100 * 1024; }},
      {"the memory for data is limited to 9 MiB, which is too little for .NET", Failed("0x80004005"),
       [](Surroundings& around) { around.data = 10'000'000; }},
      {"the stack is limited to 32 KiB, which is too little for .NET", Died(SIGSEGV),
       [](Surroundings& around) { around.stack = 32 * 1024; }},
      {"the address space is limited to 1024 MiB, which is too little for .NET", Failed("0x8007000E"),
       [](Surroundings& around) { around.address_space = 1024 * 1024 * 1024; }},
      {"the address space is limited to 64 MiB, which is too little for .NET", Died(SIGSEGV),
       [](Surroundings& around) { around.address_space = 64 * 1024 * 1024; }},
      {"only 10 files may be open at once, which is too few for .NET", Failed("0x8007054F"),
       [](Surroundings& around) { around.open_files = 10; }},
      {"the control group's memory is limited to 100 MiB", Failed("0x8007000E"),
       [](Surroundings& around) { around.group_memory = 100 * 1024 * 1024; }},
      {"the runtime does not start: something has failed that has no number of its own (0x80004005)",
       Failed("0x80004005"), [](Surroundings& around) { around.open_files = 1024; }},
      {"the runtime does not start (SIGSEGV)", Died(SIGSEGV), [](Surroundings&) {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    StartReport start = row.start;
    row.surround(start.surroundings);

    EXPECT_EQ(Text(start), row.text);
    EXPECT_NE(CauseOf(start)->cure, "");
  }
}

TEST(StartCause, TheRuntimesOwnWordsTellThatIcuIsMissing) {
  for (const char* words : {"Couldn't find a valid ICU package installed on the system.", "cannot load libicuuc.so"}) {
    StartReport start = Died(SIGABRT);
    start.probe.child.output = words;

    EXPECT_EQ(Text(start), "ICU, which the application needs, is missing") << words;
  }
}

TEST(StartCause, OnlyALowLimitExplainsAStartThatDies) {
  constexpr std::uint64_t kMebibyte = 1 << 20;
  struct Row {
    const char* text;
    void (*surround)(Surroundings& surroundings);
  };
  const char* unknown = "the runtime does not start (SIGSEGV)";
  const Row rows[] = {
      {"the address space is limited to 511 MiB, which is too little for .NET",
       [](Surroundings& around) { around.address_space = 512 * kMebibyte - 1; }},
      {unknown, [](Surroundings& around) { around.address_space = 512 * kMebibyte; }},
      {"only 63 files may be open at once, which is too few for .NET",
       [](Surroundings& around) { around.open_files = 63; }},
      {unknown, [](Surroundings& around) { around.open_files = 64; }},
      {"the control group's memory is limited to 63 MiB",
       [](Surroundings& around) { around.group_memory = 64 * kMebibyte - 1; }},
      {unknown, [](Surroundings& around) { around.group_memory = 64 * kMebibyte; }},
      {"a file may not be larger than 512 bytes, which is too little for .NET",
       [](Surroundings& around) { around.file_size = 512; }},
      {"a file may not be larger than 1 MiB, which is too little for .NET",
       [](Surroundings& around) { around.file_size = 2 * kMebibyte - 1; }},
      {unknown, [](Surroundings& around) { around.file_size = 2 * kMebibyte; }},
      {"the memory for data is limited to 63 MiB, which is too little for .NET",
       [](Surroundings& around) { around.data = 64 * kMebibyte - 1; }},
      {unknown, [](Surroundings& around) { around.data = 64 * kMebibyte; }},
      {"the stack is limited to 127 KiB, which is too little for .NET",
       [](Surroundings& around) { around.stack = 128 * 1024 - 1; }},
      {unknown, [](Surroundings& around) { around.stack = 128 * 1024; }},
  };
  for (const Row& row : rows) {
    StartReport start = Died(SIGSEGV);
    row.surround(start.surroundings);

    EXPECT_EQ(Text(start), row.text);
  }
}

TEST(StartCause, OnlyASmallLimitOfFilesExplainsALackOfMemory) {
  StartReport start = Failed("0x8007000E");
  start.surroundings.file_size = (64 << 20) - 1;
  EXPECT_EQ(Text(start), "a file may not be larger than 63 MiB, which is too little for .NET");

  start.surroundings.file_size = 64 << 20;
  EXPECT_EQ(Text(start), "the runtime does not start: there is not enough memory (0x8007000e)");
}

// What says most stands first; each step mends what the one before has said.
TEST(StartCause, OfSeveralTheOneThatSaysMostIsNamed) {
  StartReport start = Died(SIGABRT);
  start.probe.child.output = "ICU, HRESULT: 0x8007000E";
  start.broken = {{"/net/6.0.36/libcoreclr.so", Need::kStart, true, false, false, "missing"}};
  start.collector_options = {{"System.GC.HeapHardLimit", "16"}};
  Surroundings& around = start.surroundings;
  around = {false, false, 1, 2, 3, 4, 5, 6, {{"DOTNET_GCPath", "/none"}}, {{"DOTNET_AltJit", "*"}}};

  EXPECT_EQ(CauseOf(start)->finding, Finding::kRuntimeFileBroken);
  start.broken.clear();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kNoIcu);
  start.probe.child.output = "HRESULT: 0x8007000E";
  EXPECT_EQ(CauseOf(start)->finding, Finding::kMemoryNotExecutable);
  around.may_execute_written_memory = true;
  EXPECT_EQ(CauseOf(start)->finding, Finding::kNoMemoryFiles);
  around.has_memory_files = true;
  EXPECT_EQ(CauseOf(start)->finding, Finding::kCompilerVariable);
  around.compiler_variables.clear();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kCollectorVariable);
  around.collector_variables.clear();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kCollectorOption);
  start.collector_options.clear();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kFileSizeLimited);
  around.file_size.reset();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kAddressSpaceLimited);
  around.address_space.reset();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kDataLimited);
  around.data.reset();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kStackLimited);
  around.stack.reset();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kOpenFilesLimited);
  around.open_files.reset();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kGroupMemoryLimited);
  around.group_memory.reset();
  EXPECT_EQ(CauseOf(start)->finding, Finding::kRuntimeNotStarted);
}

TEST(StartCause, AnOptionOfTheApplicationExplainsACollectorThatFails) {
  StartReport start = Failed("0x8007000E");
  start.collector_options = {{"System.GC.HeapHardLimit", "16"}};
  EXPECT_EQ(Text(start), "the garbage collector cannot be started with System.GC.HeapHardLimit=16");

  start = Failed("0x80004005");
  start.collector_options = {{"System.GC.HeapHardLimit", "16"}};
  EXPECT_EQ(Text(start), "the runtime does not start: something has failed that has no number of its own (0x80004005)")
      << "another failure has another cause";
}

TEST(StartCause, TheLastWordsOfAnUnknownFailureAreKept) {
  StartReport start = Failed("0x80004005");
  EXPECT_EQ(CauseOf(start)->meaning, "It says: Failed to create CoreCLR, HRESULT: 0x80004005");

  start.probe.child.output = "first\nFatal error\n";
  EXPECT_EQ(CauseOf(start)->meaning, "It says: Fatal error");

  start.probe.child.output = "Failed to load JIT compiler\n   at System.Runtime.Main()\n   at System.Other()\n\n";
  EXPECT_EQ(CauseOf(start)->meaning, "It says: Failed to load JIT compiler") << "what it was in says nothing";
}

}  // namespace
}  // namespace doctor

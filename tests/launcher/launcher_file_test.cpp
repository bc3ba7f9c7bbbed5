// The built executable as a file: how it is hardened, what it needs and what it exports.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "tests/support/launcher.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

using Names = std::set<std::string>;

std::string Tell(const char* tool, std::vector<std::string> arguments) {
  arguments.push_back(LauncherFile());
  const auto outcome = Command(tool).Arguments(std::move(arguments)).Run();
  EXPECT_EQ(outcome.status, 0) << tool << ": " << outcome;
  return outcome.out;
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// The names that `pattern` catches, one for each line.
Names Caught(const std::string& text, const char* pattern) {
  Names names;
  const std::regex regex(pattern);
  for (const std::string& line : LinesOf(text)) {
    if (std::smatch match; std::regex_search(line, match, regex)) {
      names.insert(match[1]);
    }
  }
  return names;
}

TEST(LauncherFile, IsAPositionIndependentExecutable) {
  const std::string header = Tell(READELF, {"-hW"});
  const std::string segments = Tell(READELF, {"-lW"});

  EXPECT_TRUE(Holds(header, "DYN (Position-Independent Executable file)")) << header;
  EXPECT_TRUE(Holds(segments, "INTERP"));
}

TEST(LauncherFile, BindsEverySymbolAtOnceAndThenProtectsTheTable) {
  const std::string dynamic = Tell(READELF, {"-dW"});

  EXPECT_TRUE(Holds(Tell(READELF, {"-lW"}), "GNU_RELRO"));
  EXPECT_TRUE(Holds(dynamic, "BIND_NOW")) << dynamic;
  EXPECT_TRUE(std::regex_search(dynamic, std::regex("FLAGS_1.*NOW"))) << dynamic;
}

TEST(LauncherFile, HasAStackThatIsNotExecutable) {
  const auto lines = LinesOf(Tell(READELF, {"-lW"}));

  const auto stack = std::ranges::find_if(lines, [](const auto& line) { return Holds(line, "GNU_STACK"); });
  ASSERT_NE(stack, lines.end());
  EXPECT_TRUE(std::regex_search(*stack, std::regex(" RW +0x"))) << *stack;
}

TEST(LauncherFile, NoSegmentIsWritableAndExecutable) {
  EXPECT_EQ(Caught(Tell(READELF, {"-lW"}), "(LOAD.* RWE )"), Names{});
}

TEST(LauncherFile, NamesNoFolderToLookForLibraries) {
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer's library may be in a folder of the compiler";
  }
  const std::string dynamic = Tell(READELF, {"-dW"});

  EXPECT_FALSE(Holds(dynamic, "RPATH"));
  EXPECT_FALSE(Holds(dynamic, "RUNPATH"));
}

TEST(LauncherFile, UsesTheStackProtector) {
  EXPECT_TRUE(Holds(Tell(NM, {"-D", "--undefined-only"}), "__stack_chk_fail"));
}

// The file itself shows it only where the compiler could not prove a call harmless, and it may prove them all.
TEST(LauncherFile, EverySourceOfItIsCompiledWithTheFortifiedFunctions) {
  if (const char* why = WHY_NOT_FORTIFIED; *why != '\0') {
    GTEST_SKIP() << "fortified in optimised builds only; this is " << why;
  }
  const std::regex of_the_product(" -c " SOURCE_FOLDER "/(foundation|netloader|launcher)/");
  int compiled = 0;
  for (const std::string& line : LinesOf(ReadFile(COMPILE_COMMANDS))) {
    if (std::regex_search(line, of_the_product)) {
      EXPECT_TRUE(std::regex_search(line, std::regex("-D_FORTIFY_SOURCE=[23] "))) << line;
      ++compiled;
    }
  }
  EXPECT_GE(compiled, 6);
}

TEST(LauncherFile, NeedsTheCAndCxxLibrariesOnly) {
  if (const char* why = WHY_OTHER_SYMBOLS; *why != '\0') {
    GTEST_SKIP() << "other libraries are needed by " << why;
  }
  const Names allowed{"libc.so.6",     "libdl.so.2", "libstdc++.so.6",
                      "libgcc_s.so.1", "libm.so.6",  "ld-linux-x86-64.so.2"};

  const Names needed = Caught(Tell(READELF, {"-dW"}), R"(\(NEEDED\).*\[(.*)\])");

  EXPECT_TRUE(std::ranges::includes(allowed, needed)) << ::testing::PrintToString(needed);
  EXPECT_TRUE(needed.contains("libc.so.6"));
}

// The exported symbols of nm's kinds, demangled; without the tag that marks the C++ library's newer strings.
Names Exports(const std::string& kinds) {
  const std::string table = Tell(NM, {"-DC", "--defined-only", "--without-symbol-versions"});
  const std::string untagged = std::regex_replace(table, std::regex(R"(\[abi:cxx11\])"), "");
  return Caught(untagged, ("^[0-9a-f]+ [" + kinds + "] (.*)$").c_str());
}

bool DescribesAClass(const std::string& name) {
  return std::regex_search(name, std::regex("^(vtable|typeinfo|typeinfo name) for "));
}

// What compilers emit once, and what describes classes, which one compiler emits once and the other where needed.
Names ListedKinds() {
  Names names = Exports("TDBR");
  std::ranges::copy_if(Exports("VW"), std::inserter(names, names.end()), DescribesAClass);
  return names;
}

// Emitted wherever needed, so that they differ with the compiler and how it optimises.
Names OtherKinds() {
  Names names = Exports("VWu");
  std::erase_if(names, DescribesAClass);
  return names;
}

TEST(LauncherFile, ExportsExactlyTheListedFunctionsAndData) {
  if (const char* why = WHY_OTHER_SYMBOLS; *why != '\0') {
    GTEST_SKIP() << "more is exported by " << why;
  }
  Names listed;
  std::string now;  // The list as it would have to be, its comment included.
  for (const std::string& line : LinesOf(ReadFile(EXPORTED_SYMBOLS))) {
    if (line.starts_with("#")) {
      now += line + "\n";
    } else {
      listed.insert(line);
    }
  }

  const Names exported = ListedKinds();

  for (const std::string& name : exported) {
    now += name + "\n";
    EXPECT_TRUE(listed.contains(name)) << "exported and not listed: " << name;
  }
  for (const std::string& name : listed) {
    EXPECT_TRUE(exported.contains(name)) << "listed and not exported: " << name;
  }
  if (HasFailure()) {
    WriteFile(SYMBOLS_NOW, now);
    ADD_FAILURE() << "when the change is meant, " SYMBOLS_NOW " belongs in the place of " EXPORTED_SYMBOLS;
  }
}

TEST(LauncherFile, ExportsNothingElseThatIsNotItsOwn) {
  if (const char* why = WHY_OTHER_SYMBOLS; *why != '\0') {
    GTEST_SKIP() << "more is exported by " << why;
  }
  const std::regex own("^((non-virtual thunk to|guard variable for) )?(netloader|tov)::");
  for (const std::string& name : OtherKinds()) {
    EXPECT_TRUE(std::regex_search(name, own)) << name;
  }
}

TEST(LauncherFile, ExportsWhatALibraryInTheProcessMayCall) {
  const Names exported = ListedKinds();

  EXPECT_TRUE(exported.contains("Impl(int, char**)"));
  for (const char* name :
       {"netloader::LoaderModuleInterfaceFactory::CreateModuleLoader(", "netloader::logger::InitGlobalFileLogger(",
        "netloader::logger::ReleaseGlobalFileLogger(", "netloader::utils::ToWString(", "netloader::utils::ToString(",
        "netloader::utils::GetParentPath(", "netloader::utils::GetCurrentTimeString(",
        "netloader::quor::InitAndLoadAssembly(", "netloader::quor::DotnetSettingsProvider::GetInstance(",
        "netloader::platform_utils::SetEnvVariable("}) {
    EXPECT_TRUE(std::ranges::any_of(exported, [&](const std::string& symbol) { return symbol.starts_with(name); }))
        << name;
  }
}

}  // namespace
}  // namespace tests

#include "netloader/platform/environment.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "tests/support/scoped_environment.h"

namespace netloader::platform_utils {
namespace {

using tests::ScopedEnvironment;
using tests::Variable;

constexpr const char* kRemoved[] = {"COMPlus_GCName", "DOTNET_GCName", "DOTNET_STARTUP_HOOKS"};

// None of the variables that the tests look at is set; what a test changes is put back.
class Unset {
 public:
  Unset() {
    environment_.Remove("DOTNET_MULTILEVEL_LOOKUP").Remove("TEST_NAME").Remove("TEST");
    for (const char* name : kRemoved) {
      environment_.Remove(name);
    }
  }

 private:
  ScopedEnvironment environment_;
};

std::size_t Size() {
  std::size_t size = 0;
  while (environ[size] != nullptr) {
    ++size;
  }
  return size;
}

TEST(Environment, ACollectorAndStartupHooksOfTheParentAreGone) {
  ScopedEnvironment environment;
  environment.Set("DOTNET_STARTUP_HOOKS", "/hook.dll").Set("DOTNET_GCName", "gc.so").Set("COMPlus_GCName", "gc.so");

  ConfigureStaticEnvironmentsVariables();

  for (const char* name : kRemoved) {
    EXPECT_EQ(Variable(name), std::nullopt) << name;
  }
}

TEST(Environment, MultilevelLookupIsOffWhateverTheParentSaid) {
  for (const char* before : {"1", "0", ""}) {
    ScopedEnvironment environment;
    environment.Set("DOTNET_MULTILEVEL_LOOKUP", before);

    ConfigureStaticEnvironmentsVariables();

    EXPECT_EQ(Variable("DOTNET_MULTILEVEL_LOOKUP"), "0") << before;
  }
}

TEST(Environment, MultilevelLookupIsOffWhenTheParentSaidNothing) {
  const Unset environment;

  ConfigureStaticEnvironmentsVariables();

  EXPECT_EQ(Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
}

TEST(Environment, NothingElseChanges) {
  ScopedEnvironment environment;
  environment.Set("DOTNET_MULTILEVEL_LOOKUP", "1").Set("DOTNET_gcServer", "1").Set("dotnet_gcname", "x");
  for (const char* name : kRemoved) {
    environment.Set(name, "x");
  }
  const std::size_t before = Size();

  ConfigureStaticEnvironmentsVariables();

  EXPECT_EQ(Size(), before - 3);
  EXPECT_EQ(Variable("DOTNET_gcServer"), "1");
  EXPECT_EQ(Variable("dotnet_gcname"), "x");
}

TEST(Environment, AVariableIsSetAsUtf8AndReplacesAnyValue) {
  const Unset environment;

  SetEnvVariable(u"TEST_NAME", u"first");
  SetEnvVariable(u"TEST_NAME", u"caf\u00E9 \U0001F600");

  EXPECT_EQ(Variable("TEST_NAME"), "caf\xC3\xA9 \xF0\x9F\x98\x80");
}

TEST(Environment, AnEmptyValueIsSet) {
  const Unset environment;

  SetEnvVariable(u"TEST_NAME", u"");

  EXPECT_EQ(Variable("TEST_NAME"), "");
}

TEST(Environment, ANameThatTheSystemRefusesIsIgnored) {
  const Unset environment;
  const std::size_t before = Size();

  SetEnvVariable(u"", u"value");
  SetEnvVariable(u"TEST_NAME=x", u"value");
  SetEnvVariable(u"=", u"value");

  EXPECT_EQ(Size(), before);
}

TEST(Environment, ANulCutsNameAndValue) {
  const Unset environment;

  SetEnvVariable(tov::WideString(u"TEST\0_NAME", 10), tov::WideString(u"va\0lue", 6));

  EXPECT_EQ(Variable("TEST"), "va");
}

TEST(Environment, TextThatIsNotUtf16IsABadCastAndNothingIsSet) {
  const Unset environment;
  const tov::WideString lone{u'a', char16_t{0xD800}};
  const std::size_t before = Size();

  EXPECT_THROW(SetEnvVariable(u"TEST_NAME", lone), std::bad_cast);
  EXPECT_THROW(SetEnvVariable(lone, u"value"), std::bad_cast);

  EXPECT_EQ(Size(), before);
}

TEST(Environment, WhatWasSetBeforeAFailureStays) {
  const Unset environment;

  SetEnvVariable(u"TEST_NAME", u"before");
  EXPECT_THROW(SetEnvVariable(u"TEST_NAME", tov::WideString(1, char16_t{0xDFFF})), std::bad_cast);

  EXPECT_EQ(Variable("TEST_NAME"), "before");
}

TEST(Environment, ALaterVariableWinsOverAFixedOne) {
  const Unset environment;

  ConfigureStaticEnvironmentsVariables();
  SetEnvVariable(u"DOTNET_STARTUP_HOOKS", u"/own.dll");

  EXPECT_EQ(Variable("DOTNET_STARTUP_HOOKS"), "/own.dll");
}

TEST(Environment, TheErrorCodeIsTheCallingThreadsErrorNumber) {
  for (const int error : {0, ENOENT, 4095, -1}) {
    errno = error;
    EXPECT_EQ(GetErrorCode(), static_cast<std::uint32_t>(error));
    EXPECT_EQ(errno, error);
  }
}

TEST(Environment, AnotherThreadsErrorNumberIsItsOwn) {
  std::uint32_t other = 0;
  errno = EACCES;

  std::thread([&other] {
    errno = ENOENT;
    other = GetErrorCode();
  }).join();

  errno = EACCES;
  EXPECT_EQ(GetErrorCode(), static_cast<std::uint32_t>(EACCES));
  EXPECT_EQ(other, static_cast<std::uint32_t>(ENOENT));
}

using Changes = std::vector<std::string>;

std::string Narrow(const tov::WideString& ascii) {
  return {ascii.begin(), ascii.end()};
}

TEST(RuntimeEnvironment, TheFixedVariablesComeFirstAndTheOwnOnesByNameAfterThem) {
  Changes changes;

  ForEachRuntimeVariable(
      {{u"a", u"3"}, {u"B", u"2"}, {u"A", u"1"}, {u"", u"nameless"}, {u"C", u""}},
      [&](const StaticVariable& fixed) { changes.push_back(fixed.name); },
      [&](const auto& name, const auto& value) { changes.push_back(Narrow(name) + "=" + Narrow(value)); });

  EXPECT_EQ(changes, (Changes{"DOTNET_MULTILEVEL_LOOKUP", "COMPlus_GCName", "DOTNET_GCName", "DOTNET_STARTUP_HOOKS",
                              "A=1", "B=2", "C=", "a=3"}));
}

TEST(RuntimeEnvironment, AnOwnVariableWinsOverAFixedOne) {
  const ScopedEnvironment environment({{"DOTNET_STARTUP_HOOKS", "theirs"}, {"DOTNET_GCName", "theirs"}});

  ApplyRuntimeEnvironment({{u"DOTNET_STARTUP_HOOKS", u"own"}});

  EXPECT_EQ(Variable("DOTNET_STARTUP_HOOKS"), "own");
  EXPECT_EQ(Variable("DOTNET_GCName"), std::nullopt);
}

TEST(RuntimeEnvironment, WhatComesBeforeATextThatDoesNotConvertStaysApplied) {
  const ScopedEnvironment environment({{"DOTNET_MULTILEVEL_LOOKUP", "1"}, {"RUNTIME_TEST_A", ""}});

  EXPECT_THROW(ApplyRuntimeEnvironment({{u"RUNTIME_TEST_A", u"1"}, {u"RUNTIME_TEST_B", tov::WideString(1, u'\xd800')}}),
               std::bad_cast);

  EXPECT_EQ(Variable("DOTNET_MULTILEVEL_LOOKUP"), "0");
  EXPECT_EQ(Variable("RUNTIME_TEST_A"), "1");
  EXPECT_EQ(Variable("RUNTIME_TEST_B"), std::nullopt);
}

}  // namespace
}  // namespace netloader::platform_utils

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "netloader/platform/environment.h"

namespace {

// What was called, and whether the calls fail.
std::vector<std::string> calls;
bool recording = false;
bool failing = false;

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

int Answer() {
  errno = failing ? ENOMEM : 0;
  return failing ? -1 : 0;
}

}  // namespace

extern "C" {

int setenv(const char* name, const char* value, int replace) noexcept {
  if (!recording) {
    return Next<int(const char*, const char*, int)>("setenv")(name, value, replace);
  }
  calls.push_back(std::string("set ") + name + "=" + value + (replace != 0 ? " in any case" : " if missing"));
  return Answer();
}

int unsetenv(const char* name) noexcept {
  if (!recording) {
    return Next<int(const char*)>("unsetenv")(name);
  }
  calls.push_back(std::string("remove ") + name);
  return Answer();
}

}  // extern "C"

namespace netloader::platform_utils {
namespace {

template <typename Act>
std::vector<std::string> CallsOf(const Act& act, bool fail) {
  calls.clear();
  failing = fail;
  recording = true;
  act();
  recording = false;
  return calls;
}

TEST(EnvironmentSystem, TheFixedVariablesAreAppliedInTheirOrderEvenWhenEveryCallFails) {
  for (const bool fail : {false, true}) {
    EXPECT_EQ(CallsOf(ConfigureStaticEnvironmentsVariables, fail),
              (std::vector<std::string>{"set DOTNET_MULTILEVEL_LOOKUP=0 in any case", "remove COMPlus_GCName",
                                        "remove DOTNET_GCName", "remove DOTNET_STARTUP_HOOKS"}))
        << fail;
  }
}

TEST(EnvironmentSystem, AVariableThatCannotBeSetIsIgnored) {
  for (const bool fail : {false, true}) {
    EXPECT_EQ(CallsOf([] { SetEnvVariable(u"NAME", u"value"); }, fail),
              std::vector<std::string>{"set NAME=value in any case"})
        << fail;
  }
}

}  // namespace
}  // namespace netloader::platform_utils

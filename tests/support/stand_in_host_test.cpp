#include "tests/support/stand_in_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <stdexcept>

#include "tests/support/runtime_tree.h"
#include "tests/support/scoped_environment.h"

namespace tests {
namespace {

struct Parameters {
  std::size_t size;
  const char* host_path;
  const char* dotnet_root;
};
using Initialize = int (*)(int, const char**, const Parameters*, void**);
using CallWithHandle = int (*)(void*);
using Writer = void (*)(const char*);

struct CloseLibrary {
  void operator()(void* library) const { ::dlclose(library); }
};
using Library = std::unique_ptr<void, CloseLibrary>;

Library Open(const std::filesystem::path& file) {
  return Library(::dlopen(file.c_str(), RTLD_NOW));
}

template <typename Function>
Function Find(const Library& library, const char* name) {
  return reinterpret_cast<Function>(::dlsym(library.get(), name));
}

constexpr const char* kInitialize = "hostfxr_initialize_for_dotnet_command_line";

TEST(StandInHost, RecordsEveryCallInOrderWithTheVersionItRanIn) {
  const StandInHost host;
  const ScopedEnvironment environment(host.Environment());
  RuntimeTree runtime;
  runtime.AddHost("6.0.7");
  const Parameters parameters{sizeof parameters, "/host", "/root"};
  const char* arguments[] = {"/app.dll", "a\tb\n%41", ""};
  void* handle = nullptr;

  auto library = Open(runtime.HostFile("6.0.7"));
  Find<Initialize>(library, kInitialize)(3, arguments, &parameters, &handle);
  Find<CallWithHandle>(library, "hostfxr_run_app")(handle);
  Find<CallWithHandle>(library, "hostfxr_close")(handle);
  library.reset();

  EXPECT_EQ(host.Story(), (std::vector<std::string>{"6.0.7 loaded", "6.0.7 initialize", "6.0.7 run_app", "6.0.7 close",
                                                    "6.0.7 unloaded"}));
  const HostCall call = host.Call("initialize");
  EXPECT_EQ(call.arguments, (std::vector<std::string>{"/app.dll", "a\tb\n%41", ""}));
  EXPECT_EQ(call.fields.at("size"), "24");
  EXPECT_EQ(call.fields.at("host_path"), "/host");
  EXPECT_EQ(call.fields.at("dotnet_root"), "/root");
  EXPECT_EQ(call.fields.at("handle"), "(nil)");
  EXPECT_NE(host.Call("run_app").fields.at("handle"), "(nil)");
  EXPECT_EQ(host.Call("run_app").fields.at("handle"), host.Call("close").fields.at("handle"));
  EXPECT_EQ(host.VersionThatRan(), "6.0.7");
}

TEST(StandInHost, SeesTheEnvironmentAsItIsWhenItIsLoaded) {
  const StandInHost host;
  ScopedEnvironment environment(host.Environment());
  environment.Set("DOTNET_Something", "x=y").Remove("DOTNET_Other");

  Open(HostLibrary());

  EXPECT_EQ(host.Call("loaded").Variable("DOTNET_Something"), "x=y");
  EXPECT_EQ(host.Call("loaded").Variable("DOTNET_Other"), "(not set)");
}

TEST(StandInHost, ReturnsThrowsAndLeavesBehindWhatItIsTold) {
  StandInHost host;
  host.Returns(HostFunction::kInitialize, -5).SetsErrno(HostFunction::kInitialize, EBADF).GivesNoHandle();
  host.Throws(HostFunction::kRun, "int").Throws(HostFunction::kClose, "broken");
  const ScopedEnvironment environment(host.Environment());
  const auto library = Open(HostLibrary());
  const Parameters parameters{sizeof parameters, "/host", "/root"};
  void* handle = nullptr;

  errno = 0;
  EXPECT_EQ(Find<Initialize>(library, kInitialize)(0, nullptr, &parameters, &handle), -5);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(handle, nullptr);
  EXPECT_THROW(Find<CallWithHandle>(library, "hostfxr_run_app")(handle), int);
  EXPECT_THROW(Find<CallWithHandle>(library, "hostfxr_close")(handle), std::runtime_error);
}

TEST(StandInHost, HandsItsWordsToTheErrorWriterThatWasSet) {
  static std::string words;
  words.clear();
  StandInHost host;
  host.Says(HostFunction::kRun, "no framework");
  const ScopedEnvironment environment(host.Environment());
  const auto library = Open(HostLibrary());
  const Writer writer = [](const char* message) { words += message; };

  const auto previous = Find<Writer (*)(Writer)>(library, "hostfxr_set_error_writer")(writer);
  Find<CallWithHandle>(library, "hostfxr_run_app")(nullptr);

  EXPECT_EQ(previous, nullptr);
  EXPECT_EQ(words, "no framework");
}

TEST(StandInHost, EachVariantIsBrokenInItsOwnWayOnly) {
  struct Row {
    const char* name;
    HostVariant variant;
    bool loads, initialize, run, close;
  };
  const Row rows[] = {
      {"whole", HostVariant::kWhole, true, true, true, true},
      {"lacks initialize", HostVariant::kLacksInitialize, true, false, true, true},
      {"lacks run", HostVariant::kLacksRun, true, true, false, true},
      {"lacks close", HostVariant::kLacksClose, true, true, true, false},
      {"null run", HostVariant::kNullRun, true, true, false, true},
      {"unresolved", HostVariant::kUnresolved, false, false, false, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto library = Open(HostLibrary(row.variant));
    ASSERT_EQ(library != nullptr, row.loads);
    if (library != nullptr) {
      EXPECT_EQ(Find<void*>(library, kInitialize) != nullptr, row.initialize);
      EXPECT_EQ(Find<void*>(library, "hostfxr_run_app") != nullptr, row.run);
      EXPECT_EQ(Find<void*>(library, "hostfxr_close") != nullptr, row.close);
    }
  }
}

TEST(StandInHost, TheNullFunctionIsFoundWithoutAnError) {
  const auto library = Open(HostLibrary(HostVariant::kNullRun));
  ::dlerror();

  EXPECT_EQ(::dlsym(library.get(), "hostfxr_run_app"), nullptr);
  EXPECT_EQ(::dlerror(), nullptr);
}

}  // namespace
}  // namespace tests

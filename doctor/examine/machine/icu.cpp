#include "doctor/examine/machine/icu.h"

#include <dlfcn.h>
#include <strings.h>

#include <algorithm>
#include <array>

#include "doctor/child/child.h"
#include "doctor/examine/config/launch_variable.h"

namespace doctor {
namespace {

constexpr auto kLibraries = std::to_array<const char*>({"libicuuc", "libicui18n"});

// The versions that the runtime tries.
constexpr int kNewest = 200;
constexpr int kOldest = 20;

bool IsYes(const std::string& value) {
  return value == "1" || ::strcasecmp(value.c_str(), "true") == 0;
}

// Each stays loaded: the process that asks lives for one question.
bool Loads(const std::string& before, const std::string& behind) {
  return std::ranges::all_of(kLibraries, [&](const char* library) {
    return ::dlopen((before + library + behind).c_str(), RTLD_LAZY) != nullptr;
  });
}

bool LoadsAnyVersion() {
  for (int version = kNewest; version >= kOldest; --version) {
    if (Loads("", ".so." + std::to_string(version))) {
      return true;
    }
  }
  return Loads("", ".so");
}

// "72.1", or "suffix:72.1" for libraries with a word behind their names.
bool LoadsOwn(const std::string& folder, const std::string& value) {
  const auto colon = value.find(':');
  const std::string suffix = colon != std::string::npos ? value.substr(0, colon) : "";
  const std::string version = value.substr(colon != std::string::npos ? colon + 1 : 0);
  return Loads(folder + "/", suffix + ".so." + version) || Loads("", suffix + ".so." + version);
}

}  // namespace

bool IsInvariant(const IcuSettings& settings) {
  const auto variable = LaunchVariable("DOTNET_SYSTEM_GLOBALIZATION_INVARIANT");
  return variable ? IsYes(*variable) : settings.is_invariant;
}

bool HasIcu(const IcuSettings& settings, const std::string& folder, const Patience& patience) {
  const std::string own = LaunchVariable("DOTNET_SYSTEM_GLOBALIZATION_APPLOCALICU").value_or(settings.own);
  const ChildResult child =
      RunInChild([&]() -> Answer { return {(own.empty() ? LoadsAnyVersion() : LoadsOwn(folder, own)) ? "there" : ""}; },
                 "loading ICU", patience);
  return child.end != ChildEnd::kFinished || child.answer.at(0) == "there";
}

}  // namespace doctor

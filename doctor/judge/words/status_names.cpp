#include "doctor/judge/words/status_names.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace doctor {
namespace {

struct StatusName {
  std::uint32_t status;
  std::string_view name;
  std::string_view words;
};

// Results of the runtime and of what it is built on, which its own words give as numbers only.
struct ResultWords {
  std::uint32_t result;
  std::string_view words;
};

constexpr auto kResults = std::to_array<ResultWords>({
    {0x80004001, "something is not implemented"},
    {0x80004002, "a component is of another version"},
    {0x80004005, "something has failed that has no number of its own"},
    {0x8000ffff, "something happened that should not"},
    {0x80070002, "a file is missing"},
    {0x80070003, "a folder is missing"},
    {0x80070005, "access to a file is denied"},
    {0x80070008, "no thread can be had"},
    {0x8007000b, "a file is not in the right format"},
    {0x8007000e, "there is not enough memory"},
    {0x8007001f, "the system cannot do what is asked of it"},
    {0x80070057, "an argument is not valid"},
    {0x8007007e, "a library is missing"},
    {0x8007007f, "a library lacks a function"},
    {0x800700c1, "a file is not in the right format"},
    {0x8007045a, "a library cannot be initialized"},
    {0x8007054f, "the system has failed"},
    {0x801312e4, "the code of the runtime and its precompiled libraries do not go together"},
    {0x80131018, "an assembly is not in the right format"},
    {0x80131040, "an assembly is not the one that is asked for"},
    {0x80131047, "the name of an assembly is not valid"},
    {0x80131500, "there was an exception"},
    {0x80131506, "the runtime itself has failed"},
    {0x80131509, "something is not in the state for it"},
    {0x80131513, "a method is missing"},
    {0x80131522, "a type cannot be loaded"},
    {0x80131524, "a library is missing"},
    {0x80131534, "a class cannot be initialized"},
    {0x80131621, "a file cannot be loaded"},
    {0x8013200f, "the settings of the garbage collector are not valid"},
});

constexpr auto kNames = std::to_array<StatusName>({
    {0x00000000, "Success", ""},
    {0x00000001, "Success_HostAlreadyInitialized", ""},
    {0x00000002, "Success_DifferentRuntimeProperties", ""},
    {0x80008081, "InvalidArgFailure", "an argument is not valid"},
    {0x80008082, "CoreHostLibLoadFailure", "a library that it needs cannot be loaded"},
    {0x80008083, "CoreHostLibMissingFailure", "a library that it needs is missing"},
    {0x80008084, "CoreHostEntryPointFailure", "a library that it needs lacks a function"},
    {0x80008085, "CoreHostCurHostFindFailure", "it does not find its own folder"},
    {0x80008087, "CoreClrResolveFailure", "libcoreclr.so is missing"},
    {0x80008088, "CoreClrBindFailure", "libcoreclr.so lacks a function"},
    {0x80008089, "CoreClrInitFailure", ""},
    {0x8000808a, "CoreClrExeFailure", "the application cannot be run"},
    {0x8000808b, "ResolverInitFailure", "the list of the files of the application or of a framework cannot be read"},
    {0x8000808c, "ResolverResolveFailure", "a file that the application or a framework lists is missing"},
    {0x8000808d, "LibHostCurExeFindFailure", "it does not find the program that it runs in"},
    {0x8000808e, "LibHostInitFailure", "its own libraries do not go together"},
    {0x80008090, "LibHostExecModeFailure", "it does not know the way in which it is used"},
    {0x80008091, "LibHostSdkFindFailure", "it finds no .NET SDK"},
    {0x80008092, "LibHostInvalidArgs", "its arguments name no application"},
    {0x80008093, "InvalidConfigFile", "a runtimeconfig.json cannot be used"},
    {0x80008094, "AppArgNotRunnable", "the file is no application that can be run"},
    {0x80008095, "AppHostExeNotBoundFailure", "the program names no application"},
    {0x80008096, "FrameworkMissingFailure", "a framework is missing"},
    {0x80008097, "HostApiFailed", "a function of it has failed"},
    {0x80008098, "HostApiBufferTooSmall", "a text is longer than it was asked to give"},
    {0x80008099, "LibHostUnknownCommand", "it does not know the command"},
    {0x8000809a, "LibHostAppRootFindFailure", "it does not find the application"},
    {0x8000809b, "SdkResolverResolveFailure", "it does not find the .NET SDK that is asked for"},
    {0x8000809c, "FrameworkCompatFailure", "two versions of a framework do not go together"},
    {0x8000809d, "FrameworkCompatRetry", "a framework is needed in a newer version"},
    {0x8000809e, "AppHostExeNotBundle", "the program holds no application"},
    {0x8000809f, "BundleExtractionFailure", "the application cannot be unpacked"},
    {0x800080a0, "BundleExtractionIOError", "the application cannot be unpacked: a file cannot be written"},
    {0x800080a1, "LibHostDuplicateProperty", "a property of the runtime is set twice"},
    {0x800080a2, "HostApiUnsupportedVersion", "it does not know the version of the interface"},
    {0x800080a3, "HostInvalidState", "a runtime is there already, or none is prepared"},
    {0x800080a4, "HostPropertyNotFound", "the runtime has no such property"},
    {0x800080a5, "CoreHostIncompatibleConfig", "the runtime that is there does not fit"},
    {0x800080a6, "HostApiUnsupportedScenario", "it does not offer this for an application"},
    {0x800080a7, "HostFeatureDisabled", "the feature is switched off"},
});
static_assert(std::ranges::is_sorted(kNames, {}, &StatusName::status), "looked up by binary search");

const StatusName* Find(std::int32_t status) {
  const auto bits = static_cast<std::uint32_t>(status);
  const auto* found = std::ranges::lower_bound(kNames, bits, {}, &StatusName::status);
  return found != kNames.end() && found->status == bits ? found : nullptr;
}

}  // namespace

std::string_view HostStatusName(std::int32_t status) {
  const StatusName* found = Find(status);
  return found != nullptr ? found->name : "unknown status";
}

std::string_view StatusWords(std::int32_t status) {
  if (const StatusName* found = Find(status)) {
    return found->words;
  }
  const auto* found = std::ranges::find(kResults, static_cast<std::uint32_t>(status), &ResultWords::result);
  return found != kResults.end() ? found->words : std::string_view();
}

std::string Hex(std::int32_t status) {
  std::array<char, sizeof("0x80000000")> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned int>(status)));
  return text.data();
}

}  // namespace doctor

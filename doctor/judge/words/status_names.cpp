#include "doctor/judge/words/status_names.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace doctor {
namespace {

struct StatusName {
  std::uint32_t status;
  std::string_view name;
};

constexpr auto kNames = std::to_array<StatusName>({
    {0x00000000, "Success"},
    {0x00000001, "Success_HostAlreadyInitialized"},
    {0x00000002, "Success_DifferentRuntimeProperties"},
    {0x80008081, "InvalidArgFailure"},
    {0x80008082, "CoreHostLibLoadFailure"},
    {0x80008083, "CoreHostLibMissingFailure"},
    {0x80008084, "CoreHostEntryPointFailure"},
    {0x80008085, "CoreHostCurHostFindFailure"},
    {0x80008087, "CoreClrResolveFailure"},
    {0x80008088, "CoreClrBindFailure"},
    {0x80008089, "CoreClrInitFailure"},
    {0x8000808a, "CoreClrExeFailure"},
    {0x8000808b, "ResolverInitFailure"},
    {0x8000808c, "ResolverResolveFailure"},
    {0x8000808d, "LibHostCurExeFindFailure"},
    {0x8000808e, "LibHostInitFailure"},
    {0x80008090, "LibHostExecModeFailure"},
    {0x80008091, "LibHostSdkFindFailure"},
    {0x80008092, "LibHostInvalidArgs"},
    {0x80008093, "InvalidConfigFile"},
    {0x80008094, "AppArgNotRunnable"},
    {0x80008095, "AppHostExeNotBoundFailure"},
    {0x80008096, "FrameworkMissingFailure"},
    {0x80008097, "HostApiFailed"},
    {0x80008098, "HostApiBufferTooSmall"},
    {0x80008099, "LibHostUnknownCommand"},
    {0x8000809a, "LibHostAppRootFindFailure"},
    {0x8000809b, "SdkResolverResolveFailure"},
    {0x8000809c, "FrameworkCompatFailure"},
    {0x8000809d, "FrameworkCompatRetry"},
    {0x8000809e, "AppHostExeNotBundle"},
    {0x8000809f, "BundleExtractionFailure"},
    {0x800080a0, "BundleExtractionIOError"},
    {0x800080a1, "LibHostDuplicateProperty"},
    {0x800080a2, "HostApiUnsupportedVersion"},
    {0x800080a3, "HostInvalidState"},
    {0x800080a4, "HostPropertyNotFound"},
    {0x800080a5, "CoreHostIncompatibleConfig"},
    {0x800080a6, "HostApiUnsupportedScenario"},
    {0x800080a7, "HostFeatureDisabled"},
});
static_assert(std::ranges::is_sorted(kNames, {}, &StatusName::status), "looked up by binary search");

}  // namespace

std::string_view HostStatusName(std::int32_t status) {
  const auto bits = static_cast<std::uint32_t>(status);
  const auto* found = std::ranges::lower_bound(kNames, bits, {}, &StatusName::status);
  return found != kNames.end() && found->status == bits ? found->name : "unknown status";
}

std::string Hex(std::int32_t status) {
  std::array<char, sizeof("0x80000000")> text{};
  static_cast<void>(std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned int>(status)));
  return text.data();
}

}  // namespace doctor

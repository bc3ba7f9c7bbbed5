#include "doctor/judge/words/status_names.h"

#include <gtest/gtest.h>

namespace doctor {
namespace {

std::int32_t Status(std::uint32_t bits) {
  return static_cast<std::int32_t>(bits);
}

TEST(StatusNames, TheDocumentedCodesHaveTheirDocumentedNames) {
  struct Row {
    std::uint32_t status;
    const char* name;
  };
  // In the order of the public list; codes that it leaves out have no name.
  const Row rows[] = {
      {0, "Success"},
      {1, "Success_HostAlreadyInitialized"},
      {2, "Success_DifferentRuntimeProperties"},
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
  };
  for (const Row& row : rows) {
    EXPECT_EQ(HostStatusName(Status(row.status)), row.name) << std::hex << row.status;
  }
}

TEST(StatusNames, OtherCodesAreUnknown) {
  for (const std::uint32_t status :
       {3U, 0x80008080U, 0x80008086U, 0x8000808fU, 0x800080a8U, 0x80070057U, 0xffffffffU}) {
    EXPECT_EQ(HostStatusName(Status(status)), "unknown status") << std::hex << status;
  }
}

TEST(StatusNames, ACodeIsWrittenWithEightDigits) {
  EXPECT_EQ(Hex(0), "0x00000000");
  EXPECT_EQ(Hex(Status(0x80008096)), "0x80008096");
  EXPECT_EQ(Hex(-1), "0xffffffff");
}

TEST(StatusWords, SayWhatAStatusOrAResultMeans) {
  EXPECT_EQ(StatusWords(static_cast<std::int32_t>(0x80008083)), "a library that it needs is missing");
  EXPECT_EQ(StatusWords(static_cast<std::int32_t>(0x8007000e)), "there is not enough memory");
  EXPECT_EQ(StatusWords(static_cast<std::int32_t>(0x80131621)), "a file cannot be loaded");
  EXPECT_EQ(StatusWords(0), "");
  EXPECT_EQ(StatusWords(static_cast<std::int32_t>(0x8abcdef0)), "");
}

}  // namespace
}  // namespace doctor

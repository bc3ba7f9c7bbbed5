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
  struct Row {
    std::uint32_t status;
    const char* words;
  };
  // Those of the host, then those of the runtime. Where the words would say no more than the name there are none.
  const Row rows[] = {
      {0x00000000, ""},
      {0x00000001, ""},
      {0x00000002, ""},
      {0x80008081, "an argument is not valid"},
      {0x80008082, "a library that it needs cannot be loaded"},
      {0x80008083, "a library that it needs is missing"},
      {0x80008084, "a library that it needs lacks a function"},
      {0x80008085, "it does not find its own folder"},
      {0x80008087, "libcoreclr.so is missing"},
      {0x80008088, "libcoreclr.so lacks a function"},
      {0x80008089, ""},
      {0x8000808a, "the application cannot be run"},
      {0x8000808b, "the list of the files of the application or of a framework cannot be read"},
      {0x8000808c, "a file that the application or a framework lists is missing"},
      {0x8000808d, "it does not find the program that it runs in"},
      {0x8000808e, "its own libraries do not go together"},
      {0x80008090, "it does not know the way in which it is used"},
      {0x80008091, "it finds no .NET SDK"},
      {0x80008092, "its arguments name no application"},
      {0x80008093, "a runtimeconfig.json cannot be used"},
      {0x80008094, "the file is no application that can be run"},
      {0x80008095, "the program names no application"},
      {0x80008096, "a framework is missing"},
      {0x80008097, "a function of it has failed"},
      {0x80008098, "a text is longer than it was asked to give"},
      {0x80008099, "it does not know the command"},
      {0x8000809a, "it does not find the application"},
      {0x8000809b, "it does not find the .NET SDK that is asked for"},
      {0x8000809c, "two versions of a framework do not go together"},
      {0x8000809d, "a framework is needed in a newer version"},
      {0x8000809e, "the program holds no application"},
      {0x8000809f, "the application cannot be unpacked"},
      {0x800080a0, "the application cannot be unpacked: a file cannot be written"},
      {0x800080a1, "a property of the runtime is set twice"},
      {0x800080a2, "it does not know the version of the interface"},
      {0x800080a3, "a runtime is there already, or none is prepared"},
      {0x800080a4, "the runtime has no such property"},
      {0x800080a5, "the runtime that is there does not fit"},
      {0x800080a6, "it does not offer this for an application"},
      {0x800080a7, "the feature is switched off"},
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
  };
  for (const Row& row : rows) {
    EXPECT_EQ(StatusWords(Status(row.status)), row.words) << std::hex << row.status;
  }
}

TEST(StatusWords, OfOtherNumbersThereAreNone) {
  EXPECT_EQ(StatusWords(Status(0x80008086)), "");
  EXPECT_EQ(StatusWords(Status(0x8abcdef0)), "");
}

}  // namespace
}  // namespace doctor

// Libraries as every linker makes them and other tools change them: what the dynamic loader loads passes the check.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

#include "netloader/netloaderhostfxr/src/elf_check.h"
#include "tests/support/elf_image.h"

namespace netloader {
namespace {

namespace fs = std::filesystem;
using tests::LoaderVerdict;

// The linker, the address that it links at, and what was done to the library afterwards.
class LinkedLibrary : public testing::TestWithParam<std::tuple<const char*, const char*, const char*>> {
 protected:
  static fs::path File() {
    const auto& [linker, address, treatment] = GetParam();
    return fs::path(LINKED_LIBRARIES) / linker / address / (std::string(treatment) + ".so");
  }
};

std::string Name(const testing::TestParamInfo<LinkedLibrary::ParamType>& info) {
  const auto& [linker, address, treatment] = info.param;
  return std::string(linker) + "_" + address + "_" + treatment;
}

TEST_P(LinkedLibrary, IsLoadableAsTheDynamicLoaderConfirms) {
  if (!fs::exists(File())) {
    GTEST_SKIP() << File() << " was not built: a tool that makes it is not installed.";
  }

  const ElfFinding finding = CheckElf(File().c_str());

  EXPECT_EQ(tests::AskLoader(File()), LoaderVerdict::kLoads);
  EXPECT_EQ(finding.verdict, ElfVerdict::kLoadable);
  EXPECT_EQ(finding.detail, "");
}

constexpr auto kTreatments = {"linked", "stripped", "patched"};

INSTANTIATE_TEST_SUITE_P(AtTheUsualAddress, LinkedLibrary,
                         testing::Combine(testing::Values("bfd", "gold", "lld", "mold"), testing::Values("usual"),
                                          testing::ValuesIn(kTreatments)),
                         Name);
INSTANTIATE_TEST_SUITE_P(AtAHighAddress, LinkedLibrary,
                         testing::Combine(testing::Values("bfd", "gold", "lld"),
                                          testing::Values("0x7ffffffffffff000", "0x8000000000000000",
                                                          "0xffffffff80000000"),
                                          testing::ValuesIn(kTreatments)),
                         Name);

}  // namespace
}  // namespace netloader

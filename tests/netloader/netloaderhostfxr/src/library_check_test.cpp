#include "netloader/netloaderhostfxr/src/library_check.h"

#include <gtest/gtest.h>

#include "tests/support/runtime_tree.h"
#include "tests/support/stand_in_host.h"

namespace netloader {
namespace {

TEST(LibraryCheck, AWholeLibraryMayBeLoaded) {
  const LibraryFinding finding = CheckLibrary(tests::HostLibrary());

  EXPECT_FALSE(finding.has_string_token);
  EXPECT_EQ(finding.elf, ElfVerdict::kLoadable);
  EXPECT_EQ(finding.detail, "");
}

TEST(LibraryCheck, AFileThatIsNoLibraryIsRefusedForWhatItIs) {
  tests::RuntimeTree runtime;
  runtime.AddHostOfBytes("6.0.1", "text");

  const LibraryFinding finding = CheckLibrary(runtime.HostFile("6.0.1"));

  EXPECT_FALSE(finding.has_string_token);
  EXPECT_EQ(finding.elf, ElfVerdict::kNotElf);
  EXPECT_EQ(finding.detail, "not an ELF file");
}

TEST(LibraryCheck, APathThatTheDynamicLoaderReplacesIsRefusedWhateverTheFileIs) {
  tests::RuntimeTree runtime;
  runtime.AddHost("6.0.$LIB").AddHostOfBytes("6.0.${LIB}", "text");

  const LibraryFinding library = CheckLibrary(runtime.HostFile("6.0.$LIB"));
  const LibraryFinding text = CheckLibrary(runtime.HostFile("6.0.${LIB}"));

  EXPECT_TRUE(library.has_string_token);
  EXPECT_EQ(library.detail, "its path contains $LIB, which the dynamic loader replaces");
  EXPECT_TRUE(text.has_string_token);
  EXPECT_EQ(text.detail, "its path contains ${LIB}, which the dynamic loader replaces");
}

}  // namespace
}  // namespace netloader

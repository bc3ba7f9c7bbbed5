// Files that tests write.
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>
#include <system_error>

namespace tests {
namespace {

TEST(WriteFile, ReplacesWhatWasThereWhetherShorterOrLonger) {
  const TempFolder folder;
  for (const std::string bytes : {"some words", "more words than before", "less", "", "words"}) {
    WriteFile(folder / "new/file", bytes);

    EXPECT_EQ(ReadFile(folder / "new/file"), bytes);
  }
}

TEST(WriteFile, ThrowsWhenItCannot) {
  const TempFolder folder;

  EXPECT_THROW(WriteFile(folder.Path(), "words"), std::system_error) << "a folder";
  EXPECT_THROW(WriteFile("/dev/full", "words"), std::system_error) << "no space left";
}

}  // namespace
}  // namespace tests

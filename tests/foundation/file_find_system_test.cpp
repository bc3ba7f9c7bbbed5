#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>

#include "foundation/file_find.h"
#include "tests/foundation/open_files.h"
#include "tests/foundation/system_calls.h"
#include "tests/support/temp_folder.h"

namespace tov::posix::filesystem {
namespace {

using tests::FailingCall;
using tests::OpenFiles;
using tests::SystemCall;
using tests::TempFolder;

TEST(FileFindSystem, AFailureOfAnyStepOfOpeningHasItsCodeAndLeavesNothingOpen) {
  struct Row {
    const char* name;
    SystemCall call;
    int error;
    std::uint32_t code;
  };
  for (const Row& row : {Row{"openat", SystemCall::kOpenat, EINTR, 0x80060004},
                         Row{"fdopendir", SystemCall::kFdopendir, ENOMEM, 0x80000041},
                         Row{"fdopendir", SystemCall::kFdopendir, EBADF, 0x80010101},
                         Row{"readdir", SystemCall::kReaddir, EIO, 0x80000059},
                         Row{"readdir at the end", SystemCall::kReaddir, 0, 0x8000004C}}) {
    const TempFolder folder;
    const std::size_t before = OpenFiles();
    FileFind find;
    int result = 0;

    {
      const FailingCall fault(row.call, 0, row.error);
      result = find.Open(folder.Path());
      EXPECT_TRUE(fault.HasFailed()) << row.name;
    }

    EXPECT_EQ(result, static_cast<int>(row.code)) << row.name;
    EXPECT_FALSE(find.HasEntry()) << row.name;
    EXPECT_EQ(OpenFiles(), before) << row.name;
  }
}

TEST(FileFindSystem, AFailedReadDiffersFromTheEnd) {
  const TempFolder folder;
  FileFind failing;
  FileFind ending;
  ASSERT_EQ(failing.Open(folder.Path()), 0);
  ASSERT_EQ(ending.Open(folder.Path()), 0);

  const FailingCall fault(SystemCall::kReaddir, 0, EIO);
  EXPECT_EQ(failing.Next(), static_cast<int>(0x80000059U));
  errno = EIO;
  EXPECT_EQ(ending.Next(), 0);
  EXPECT_EQ(ending.Next(), 0);

  EXPECT_FALSE(failing.HasEntry());
  EXPECT_FALSE(ending.HasEntry());
}

}  // namespace
}  // namespace tov::posix::filesystem

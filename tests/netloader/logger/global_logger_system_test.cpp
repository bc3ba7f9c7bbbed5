#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <filesystem>

#include "netloader/logger/global_logger.h"
#include "tests/support/temp_folder.h"

namespace {

bool failing = false;

}  // namespace

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using Lock = int(pthread_mutex_t*);
  static Lock* const next = reinterpret_cast<Lock*>(::dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  return failing ? EINVAL : next(mutex);
}

namespace netloader::logger {
namespace {

using tests::TempFolder;

TEST(GlobalLoggerSystem, WithoutTheLockNothingIsInstalled) {
  const TempFolder folder;

  failing = true;
  InitGlobalFileLogger({folder.Path().u16string(), u"log"});
  failing = false;

  EXPECT_TRUE(IsEmptyLoggerCurrent());
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(GlobalLoggerSystem, WithoutTheLockNothingIsReleased) {
  const TempFolder folder;
  InitGlobalFileLogger({folder.Path().u16string(), u"log"});
  ILogger* logger = GetLogger();

  failing = true;
  ReleaseGlobalFileLogger();
  failing = false;

  EXPECT_EQ(GetLogger(), logger);
  EXPECT_TRUE(logger->IsValid());
  ReleaseGlobalFileLogger();
  EXPECT_TRUE(IsEmptyLoggerCurrent());
}

}  // namespace
}  // namespace netloader::logger

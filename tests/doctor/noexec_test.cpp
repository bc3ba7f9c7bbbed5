#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <string>

#include "doctor/examine/runtime_report.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "tests/doctor/installation.h"

namespace doctor {
namespace {

// A file system of its own in the runtime's place.
class Mount {
 public:
  explicit Mount(unsigned long flags) {
    std::filesystem::create_directories(tests::kRoot);
    is_there_ = ::mount("none", std::string(tests::kRoot).c_str(), "tmpfs", flags, nullptr) == 0;
  }
  ~Mount() {
    if (is_there_) {
      ::umount(std::string(tests::kRoot).c_str());
    }
  }
  Mount(const Mount&) = delete;
  Mount& operator=(const Mount&) = delete;

  bool IsThere() const { return is_there_; }

 private:
  bool is_there_ = false;
};

TEST(RuntimeNearMisses, AFileSystemMountedNoexecIsNamed) {
  for (const bool noexec : {false, true}) {
    tests::Installation installation;
    const Mount mount(noexec ? MS_NOEXEC : 0);
    ASSERT_TRUE(mount.IsThere());
    installation.Host("6.0.36");

    const Warnings warnings = RuntimeNearMisses(ExamineRuntime(u"/opt/morvath/dotnet", {}));

    ASSERT_EQ(warnings.size(), noexec ? 1U : 0U);
    if (noexec) {
      EXPECT_EQ(warnings[0].finding, Finding::kNoexec);
      EXPECT_EQ(warnings[0].place, tests::kFxrFolder);
      EXPECT_EQ(warnings[0].cure, "mount -o remount,exec " + std::string(tests::kRoot));
    }
  }
}

}  // namespace
}  // namespace doctor

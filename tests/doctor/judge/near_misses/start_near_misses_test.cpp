#include <gtest/gtest.h>

#include "doctor/examine/start_report.h"
#include "doctor/judge/near_misses/near_misses.h"

namespace doctor {
namespace {

const std::string kFolder = "/net/shared/Microsoft.NETCore.App/6.0.36/";

BrokenFile Broken(const std::string& name, Need need) {
  return {kFolder + name, need, true, false, false, "cut short"};
}

// The places that are named, one after the other.
std::string Places(const StartReport& report) {
  std::string places;
  for (const Warning& warning : StartNearMisses(report)) {
    places.append(warning.place.substr(kFolder.size())).append(" ");
  }
  return places;
}

TEST(StartNearMisses, SayWhatIsBrokenAndWhatToInstallAgain) {
  const Warnings warnings = StartNearMisses({{{ChildEnd::kFinished}, true}, {Broken("a\033.dll", Need::kLater)}});

  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0].finding, Finding::kBrokenFile);
  EXPECT_EQ(warnings[0].place, kFolder + "a\\x1b.dll");
  EXPECT_EQ(warnings[0].text, kFolder + "a\\x1b.dll is broken (cut short)");
  EXPECT_EQ(warnings[0].cure, "install 6.0.36 again");
}

TEST(StartNearMisses, LeaveOutTheFileThatDecides) {
  StartReport report{
      {{ChildEnd::kFinished}, true},
      {Broken("start.so", Need::kStart), Broken("main.dll", Need::kMain), Broken("b.dll", Need::kLater)}};

  EXPECT_EQ(Places(report), "start.so b.dll ") << "the runtime has started without the first";
  report.probe.result = 7;
  EXPECT_EQ(Places(report), "main.dll b.dll ");
}

TEST(StartNearMisses, LeaveOutWhatStartingTakesWhereTheStartFails) {
  const StartReport report{{{ChildEnd::kFinished}, true, 7},
                           {Broken("start.so", Need::kStart), Broken("other.so", Need::kStart)}};

  EXPECT_EQ(Places(report), "");
}

}  // namespace
}  // namespace doctor

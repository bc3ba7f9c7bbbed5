#include "doctor/judge/near_misses/other_root_near_misses.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace doctor {
namespace {

const std::vector<OtherRoot> kUsable = {{{"/other", ""}, RootState::kServes, "6.0.36", true}};

// The codes of what is noticed when a launch ends there and this was found on the way.
std::string Noticed(Stop stop, const Warnings& warnings, const std::vector<OtherRoot>& roots = kUsable) {
  const SettingsReport settings;
  Verdict verdict;
  verdict.stop = stop;
  std::string codes;
  for (const Warning& warning : OtherRootNearMisses({settings, nullptr, verdict, warnings, roots})) {
    codes += RowOf(kFindings, warning.finding).code;
  }
  return codes;
}

Warnings MayDecide(Finding finding) {
  Warnings warnings;
  warnings.emplace_back().finding = finding;
  warnings.back().may_decide = true;
  return warnings;
}

TEST(OtherRootNearMisses, ARootThatServesIsNamed) {
  EXPECT_EQ(Noticed(Stop::kFolder, {}), "runtime-elsewhere");
  EXPECT_EQ(Noticed(Stop::kFolder, MayDecide(Finding::kQuotedValue)), "runtime-elsewhere");
  EXPECT_EQ(Noticed(Stop::kContext, {}), "") << "the host has answered";
  EXPECT_EQ(Noticed(Stop::kFolder, {}, {}), "");
  EXPECT_EQ(Noticed(Stop::kFolder, {}, {{{"/other"}, RootState::kRefused, "6.0.36", true}}), "");
  EXPECT_EQ(Noticed(Stop::kFolder, {}, {{{"/other", "", true}, RootState::kServes, "6.0.36", true}}), "")
      << "the settings mean it";
}

TEST(OtherRootNearMisses, NoneIsNamedWhereTheRootOrTheFileIsMendedInItsPlace) {
  const std::pair<Finding, Stop> rows[] = {
      {Finding::kSettingsAreFolder, Stop::kNoRoot},     {Finding::kSettingsHaveExtension, Stop::kSettings},
      {Finding::kSettingsHaveExtension, Stop::kNoRoot}, {Finding::kSettingsFolderNoFolder, Stop::kSettings},
      {Finding::kSettingsLinkBroken, Stop::kSettings},  {Finding::kSettingsNotAFile, Stop::kNoRoot},
      {Finding::kSettingsAreUtf16, Stop::kNoRoot},      {Finding::kFolderIsLink, Stop::kFolder},
      {Finding::kLibraryIsLink, Stop::kNoVersion},      {Finding::kFolderNotEntered, Stop::kFolder},
      {Finding::kFileNotRead, Stop::kNoneLoads},        {Finding::kNoexec, Stop::kNoneLoads},
      {Finding::kNeededLibrary, Stop::kNoneLoads},      {Finding::kTooFewFiles, Stop::kFolder},
  };
  for (const auto& [finding, stop] : rows) {
    SCOPED_TRACE(RowOf(kFindings, finding).code);
    Warnings mayNot = MayDecide(finding);
    mayNot[0].may_decide = false;

    EXPECT_EQ(Noticed(stop, MayDecide(finding)), "");
    EXPECT_EQ(Noticed(stop, mayNot), "runtime-elsewhere") << "it is not why the launch ends";
    EXPECT_EQ(Noticed(Stop::kNone, MayDecide(finding)), "runtime-elsewhere") << "it explains another end";
  }
}

TEST(OtherRootNearMisses, AreLookedForWhereARootIsWanting) {
  const RuntimeReport runtime;
  const auto wants = [&runtime](Stop stop, Finding finding = Finding::kNoVersion) {
    Verdict verdict;
    verdict.stop = stop;
    verdict.cause.finding = finding;
    return WantsOtherRoot(verdict, &runtime);
  };

  for (const Stop stop : {Stop::kNoRoot, Stop::kFolder, Stop::kNoVersion, Stop::kNoneLoads, Stop::kContext}) {
    EXPECT_TRUE(wants(stop)) << static_cast<unsigned int>(stop);
  }
  for (const Stop stop : {Stop::kNone, Stop::kText, Stop::kNames, Stop::kLoading, Stop::kInHost, Stop::kStart}) {
    EXPECT_FALSE(wants(stop)) << static_cast<unsigned int>(stop);
  }
  EXPECT_TRUE(wants(Stop::kSettings, Finding::kSettingsMissing));
  EXPECT_FALSE(wants(Stop::kSettings, Finding::kSettingsUnreadable));
}

}  // namespace
}  // namespace doctor

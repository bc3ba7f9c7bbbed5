#include <gtest/gtest.h>

#include "doctor/judge/near_misses/near_misses.h"

namespace doctor {
namespace {

// "text -> cure", one line each.
std::string Story(const std::vector<OpenPath>& open) {
  std::string story;
  for (const Warning& warning : OpenPathNearMisses(open)) {
    story += warning.text + " -> " + warning.cure + "\n";
    EXPECT_FALSE(warning.may_decide);
  }
  return story;
}

TEST(OpenPathNearMisses, SayWhoMayChangeWhatAndHowItIsClosed) {
  EXPECT_EQ(Story({{"/a b", ChangeRight::kOwner, "quor"},
                   {"/c", ChangeRight::kGroup, "staff"},
                   {"/d", ChangeRight::kEverybody}}),
            "/a b belongs to quor -> where launches run as quor, ask as that user:  grellin_doctor --user quor\n"
            "the group staff may change /c -> chmod g-w /c\n"
            "everybody may change /d -> chmod o-w /d\n");
}

TEST(OpenPathNearMisses, NameATreeThatIsOpenInOneWayOnce) {
  EXPECT_EQ(Story({{"/n", ChangeRight::kOwner, "quor", true},
                   {"/n", ChangeRight::kEverybody, "", true},
                   {"/n/host", ChangeRight::kOwner, "quor", true},
                   {"/n/host/x", ChangeRight::kOwner, "quor", true},
                   {"/n/other", ChangeRight::kOwner, "else", true},
                   {"/nn", ChangeRight::kOwner, "quor", true}}),
            "/n belongs to quor, and 2 more in it -> where launches run as quor, ask as that user:  grellin_doctor "
            "--user quor\n"
            "everybody may change /n -> chmod o-w /n\n"
            "/n/other belongs to else -> where launches run as else, ask as that user:  grellin_doctor --user else\n"
            "/nn belongs to quor -> where launches run as quor, ask as that user:  grellin_doctor --user quor\n");
}

TEST(OpenPathNearMisses, ChangeNothingBelowAFolderThatIsOnlyOnTheWay) {
  EXPECT_EQ(Story({{"/home/us", ChangeRight::kOwner, "us", false}, {"/home/us/net", ChangeRight::kOwner, "us", true}}),
            "/home/us belongs to us -> where launches run as us, ask as that user:  grellin_doctor --user us\n"
            "/home/us/net belongs to us -> where launches run as us, ask as that user:  grellin_doctor --user us\n");
}

}  // namespace
}  // namespace doctor

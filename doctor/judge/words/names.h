// The names of what an examination finds, as the JSON and docs/doctor.md have them.
#pragma once

#include "doctor/child/child.h"
#include "doctor/examine/application_report.h"
#include "doctor/examine/machine/open_paths.h"
#include "doctor/examine/other_roots.h"
#include "doctor/examine/runtime_report.h"
#include "doctor/examine/settings_report.h"
#include "doctor/examine/start_report.h"
#include "doctor/judge/words/named.h"

namespace doctor {

inline constexpr auto kLineUses = std::to_array<Named<LineUse>>({
    {LineUse::kUsed, "used", "the launcher reads it"},
    {LineUse::kUnused, "unused", "it sets a key that the launcher does not read"},
    {LineUse::kReplaced, "replaced", "a later line sets the same key"},
    {LineUse::kSkipped, "skipped", "it sets nothing"},
    {LineUse::kMalformed, "malformed", "it is not UTF-8, and a launch aborts here"},
});
static_assert(IsComplete(kLineUses, LineUse::kMalformed));

/// `sentence` is what a report says of the folder that it names; `{result}` stands for the system's reason.
struct FolderStateText {
  netloader::FxrFolderState value;
  std::string_view code;
  std::string_view meaning;
  std::string_view sentence;
};

inline constexpr auto kFolderStates = std::to_array<FolderStateText>({
    {netloader::FxrFolderState::kWalked, "walked", "it is a folder, and was searched", ""},
    {netloader::FxrFolderState::kNoStatus, "no-status", "it is not there, or cannot be seen",
     "is not there, or cannot be seen: {result}"},
    {netloader::FxrFolderState::kIsLink, "link", "it is a symbolic link, and links are not followed",
     "is a symbolic link, and links are not followed"},
    {netloader::FxrFolderState::kNotAFolder, "not-a-folder", "it is a file, or something else", "is not a folder"},
    {netloader::FxrFolderState::kUnreadable, "unreadable", "it is a folder that this user cannot enter",
     "cannot be entered: {result}"},
});
static_assert(IsComplete(kFolderStates, netloader::FxrFolderState::kUnreadable));

inline constexpr auto kStandings = std::to_array<Named<Standing>>({
    {Standing::kChosen, "chosen", "a launch takes it"},
    {Standing::kNotLoaded, "not-loaded",
     "it looks sound, but was not loaded: a launch does not come to it, or nothing is"},
    {Standing::kRefused, "refused", "a launch passes it over"},
    {Standing::kFatal, "fatal", "a launch that loads it ends there"},
    {Standing::kNotKnown, "not-known", "it was not loaded within the time limit"},
});
static_assert(IsComplete(kStandings, Standing::kNotKnown));

inline constexpr auto kRootStates = std::to_array<Named<RootState>>({
    {RootState::kNothing, "nothing", "there is no .NET"},
    {RootState::kNoVersion, "no-version", "no version fits"},
    {RootState::kRefused, "refused", "a version fits, but it is not loaded, or refuses the application"},
    {RootState::kNotLoaded, "not-loaded", "a version looks sound; nothing was loaded"},
    {RootState::kServes, "serves", "a launch would run with it, as far as was tried"},
});
static_assert(IsComplete(kRootStates, RootState::kServes));

inline constexpr auto kChangeRights = std::to_array<Named<ChangeRight>>({
    {ChangeRight::kOwner, "owner", "it belongs to another user"},
    {ChangeRight::kGroup, "group", "its group may write it"},
    {ChangeRight::kEverybody, "everybody", "every user may write it"},
});
static_assert(IsComplete(kChangeRights, ChangeRight::kEverybody));

inline constexpr auto kFileStates = std::to_array<Named<FileState>>({
    {FileState::kPresent, "present", "it is there and can be read"},
    {FileState::kMissing, "missing", "it is not there"},
    {FileState::kUnreadable, "unreadable", "it is there, but cannot be read, or is not a regular file"},
    {FileState::kMalformed, "malformed", "it does not hold a JSON object"},
});
static_assert(IsComplete(kFileStates, FileState::kMalformed));

inline constexpr auto kRollForwards = std::to_array<Named<RollForward>>({
    {RollForward::kDisable, "Disable", "the host takes that version only"},
    {RollForward::kLatestPatch, "LatestPatch", "it takes the newest patch of that minor version"},
    {RollForward::kMinor, "Minor", "it goes to the next minor version where that one has no patch that serves"},
    {RollForward::kLatestMinor, "LatestMinor", "it takes the newest minor version of that major version"},
    {RollForward::kMajor, "Major", "it goes to the next major version where that one has nothing that serves"},
    {RollForward::kLatestMajor, "LatestMajor", "it takes the newest version"},
});
static_assert(IsComplete(kRollForwards, RollForward::kLatestMajor));

inline constexpr auto kNeeds = std::to_array<Named<Need>>({
    {Need::kStart, "start", "without it the runtime does not start"},
    {Need::kMain, "main", "without it the application's first function is not reached"},
    {Need::kLater, "later", "without it an application ends that uses it"},
});
static_assert(IsComplete(kNeeds, Need::kLater));

inline constexpr auto kChildEnds = std::to_array<Named<ChildEnd>>({
    {ChildEnd::kFinished, "finished", "the work was done"},
    {ChildEnd::kThrew, "threw", "an exception ended it"},
    {ChildEnd::kThrewUnknown, "threw", "an exception ended it"},
    {ChildEnd::kExited, "exited", "the process exited on its own"},
    {ChildEnd::kCrashed, "crashed", "a signal ended the process"},
    {ChildEnd::kTimedOut, "timed-out", "it did not finish within the time limit"},
    {ChildEnd::kNotStarted, "not-started", "there was no process to be had"},
});
static_assert(IsComplete(kChildEnds, ChildEnd::kNotStarted));

}  // namespace doctor

#include <algorithm>

#include "doctor/examine/machine/open_paths.h"
#include "doctor/judge/findings.h"
#include "doctor/judge/near_misses/checks.h"
#include "doctor/judge/near_misses/near_misses.h"
#include "doctor/judge/warning.h"
#include "doctor/judge/words/text.h"

namespace doctor {
namespace {

// A path with what is below it that is open in the same way.
struct OpenTree {
  const OpenPath& top;
  std::size_t below = 0;
};

bool Holds(const OpenTree& tree, const OpenPath& path) {
  return tree.top.is_inside && tree.top.right == path.right && tree.top.who == path.who &&
         path.path.starts_with(tree.top.path + "/");
}

std::vector<OpenTree> TreesOf(const std::vector<OpenPath>& open) {
  std::vector<OpenTree> trees;
  for (const OpenPath& path : open) {
    const auto found = std::ranges::find_if(trees, [&](const OpenTree& tree) { return Holds(tree, path); });
    if (found != trees.end()) {
      ++found->below;
    } else {
      trees.push_back({path});
    }
  }
  return trees;
}

std::optional<Clue> Open(const OpenTree& tree, ChangeRight right) {
  if (tree.top.right != right) {
    return std::nullopt;
  }
  const std::string more = tree.below == 0 ? "" : ", and " + std::to_string(tree.below) + " more in it";
  Clue clue = AtPath(tree.top.path,
                     {{"owner", Printable(tree.top.who)}, {"more", more}, {"flags", tree.below == 0 ? "" : "-R "}});
  clue.may_decide = false;
  return clue;
}

// What each tree is looked at for.
constexpr auto kTreeChecks = std::to_array<Check<OpenTree>>({
    {Finding::kOwnedByAnother, [](const OpenTree& tree) { return Open(tree, ChangeRight::kOwner); }},
    {Finding::kGroupMayWrite, [](const OpenTree& tree) { return Open(tree, ChangeRight::kGroup); }},
    {Finding::kEverybodyMayWrite, [](const OpenTree& tree) { return Open(tree, ChangeRight::kEverybody); }},
});

}  // namespace

Warnings OpenPathNearMisses(const std::vector<OpenPath>& open) {
  Warnings warnings;
  for (const OpenTree& tree : TreesOf(open)) {
    Apply(kTreeChecks, tree, warnings);
  }
  return warnings;
}

}  // namespace doctor

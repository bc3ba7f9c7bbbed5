// Who besides root and this user may change what a launch runs.
#pragma once

#include <string>
#include <vector>

namespace doctor {

/// How somebody else may change a file, or put another one in its place.
enum class ChangeRight {
  kOwner,      ///< It belongs to another user.
  kGroup,      ///< Its group may write it.
  kEverybody,  ///< Every user may.
};

struct OpenPath {
  std::string path;
  ChangeRight right = ChangeRight::kOwner;
  std::string who = {};    ///< The user or group by name, or by number where there is none; empty for everybody.
  bool is_inside = false;  ///< Whether it is one of the trees, or in one; else it is on the way to one.
};

/// What a launch reads and loads.
struct TrustedPaths {
  std::vector<std::string> files = {};    ///< Each is looked at, and every folder above it.
  std::vector<std::string> folders = {};  ///< The same, and all that stands directly in them.
  std::vector<std::string> trees = {};    ///< The installations that these belong to.
};

/// All that is open to others, once for each right, in the order of the paths. A folder such as /tmp, in which
/// everybody may make files and nobody replace another's, does not count, nor does what is not there. The group root
/// counts as root, and a group of the same name as the owner as the owner.
std::vector<OpenPath> PathsOpenToOthers(const TrustedPaths& trusted);

}  // namespace doctor

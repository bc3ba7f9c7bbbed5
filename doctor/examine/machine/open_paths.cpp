#include "doctor/examine/machine/open_paths.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <set>

namespace doctor {
namespace {

namespace fs = std::filesystem;

std::string UserName(uid_t user) {
  const passwd* entry = ::getpwuid(user);
  return entry != nullptr ? entry->pw_name : std::to_string(user);
}

std::string GroupName(gid_t group) {
  const struct group* entry = ::getgrgid(group);
  return entry != nullptr ? entry->gr_name : std::to_string(group);
}

// In a user namespace that knows some users only, all others have one number, root among them.
bool KnowsAllUsers() {
  std::ifstream map("/proc/self/uid_map");
  std::uint64_t inside = 0;
  std::uint64_t outside = 0;
  std::uint64_t count = 0;
  return (map >> inside >> outside >> count) && count == std::numeric_limits<std::uint32_t>::max();
}

bool IsOwnedByOther(const struct stat& status) {
  return status.st_uid != 0 && status.st_uid != ::geteuid() && KnowsAllUsers();
}

bool IsOpenToGroup(const struct stat& status) {
  return (status.st_mode & S_IWGRP) != 0 && status.st_gid != 0 && KnowsAllUsers() &&
         GroupName(status.st_gid) != UserName(status.st_uid);
}

// Only who owns what stands in such a folder matters, and that is looked at by itself.
bool IsSticky(const struct stat& status) {
  return S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
}

void AddRights(const std::string& path, bool isInside, std::vector<OpenPath>& open) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    return;
  }
  if (IsOwnedByOther(status)) {
    open.push_back({path, ChangeRight::kOwner, UserName(status.st_uid), isInside});
  }
  if (!IsSticky(status) && IsOpenToGroup(status)) {
    open.push_back({path, ChangeRight::kGroup, GroupName(status.st_gid), isInside});
  }
  if (!IsSticky(status) && (status.st_mode & S_IWOTH) != 0) {
    open.push_back({path, ChangeRight::kEverybody, {}, isInside});
  }
}

void AddChain(const fs::path& path, std::set<std::string>& paths) {
  fs::path above;
  for (const fs::path& name : path.lexically_normal()) {
    above /= name;
    paths.insert(name.empty() ? above.parent_path().string() : above.string());
  }
}

// Both where the path leads and, where there are links on the way, by which folders it is reached.
void AddFile(const std::string& path, std::set<std::string>& paths) {
  std::error_code error;
  if (const fs::path real = fs::canonical(path, error); !error && fs::path(path).is_absolute()) {
    AddChain(path, paths);
    AddChain(real, paths);
  }
}

void AddFolder(const std::string& folder, std::set<std::string>& paths) {
  if (!fs::path(folder).is_absolute()) {
    return;
  }
  AddFile(folder, paths);
  std::error_code error;
  for (auto entry = fs::directory_iterator(fs::path(folder).lexically_normal(), error);
       !error && entry != fs::directory_iterator(); entry.increment(error)) {
    paths.insert(entry->path().string());
  }
}

bool IsIn(const std::string& path, const std::string& tree) {
  const fs::path relative = fs::path(path).lexically_relative(fs::path(tree).lexically_normal());
  return !relative.empty() && *relative.begin() != "..";
}

}  // namespace

std::vector<OpenPath> PathsOpenToOthers(const TrustedPaths& trusted) {
  std::set<std::string> paths;
  for (const std::string& file : trusted.files) {
    AddFile(file, paths);
  }
  for (const std::string& folder : trusted.folders) {
    AddFolder(folder, paths);
  }
  std::vector<OpenPath> open;
  for (const std::string& path : paths) {
    const auto isAround = [&](const std::string& tree) { return IsIn(path, tree); };
    AddRights(path, std::ranges::any_of(trusted.trees, isAround), open);
  }
  return open;
}

}  // namespace doctor

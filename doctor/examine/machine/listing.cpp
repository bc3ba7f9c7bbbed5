#include "doctor/examine/machine/listing.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "doctor/examine/machine/build_id.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

char TypeLetter(mode_t mode) {
  return S_ISDIR(mode)    ? 'd'
         : S_ISLNK(mode)  ? 'l'
         : S_ISFIFO(mode) ? 'p'
         : S_ISSOCK(mode) ? 's'
         : S_ISCHR(mode)  ? 'c'
         : S_ISBLK(mode)  ? 'b'
                          : '-';
}

std::string Rights(mode_t mode) {
  constexpr std::string_view kLetters = "rwxrwxrwx";
  std::string rights(1, TypeLetter(mode));
  for (std::size_t at = 0; at < kLetters.size(); ++at) {
    rights += (mode & (0400U >> at)) != 0 ? kLetters[at] : '-';
  }
  return rights;
}

std::string OwnerName(uid_t id) {
  const passwd* entry = ::getpwuid(id);
  return entry != nullptr ? entry->pw_name : std::to_string(id);
}

std::string GroupName(gid_t id) {
  const group* entry = ::getgrgid(id);
  return entry != nullptr ? entry->gr_name : std::to_string(id);
}

ListedFile Listed(const fs::path& path) {
  ListedFile file{path.string()};
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    file.reason = std::strerror(errno);
    return file;
  }
  file.rights = Rights(status.st_mode);
  file.owner = OwnerName(status.st_uid);
  file.group = GroupName(status.st_gid);
  file.size = static_cast<std::uint64_t>(status.st_size);
  std::error_code ignored;
  if (S_ISLNK(status.st_mode)) {
    file.target = fs::read_symlink(path, ignored).string();
  } else if (S_ISREG(status.st_mode) && path.extension() == ".so") {
    file.build_id = BuildId(path);
  }
  return file;
}

}  // namespace

Listing ListTheWayTo(const std::string& path) {
  Listing listing;
  fs::path above;
  for (const fs::path& name : fs::path(path)) {
    above /= name;
    if (!name.empty()) {
      listing.push_back(Listed(above));
    }
  }
  return listing;
}

Listing ListFolder(const std::string& folder) {
  Listing listing;
  std::error_code failure;
  for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end; entry.increment(failure)) {
    listing.push_back(Listed(entry->path()));
  }
  if (failure) {
    listing.push_back({folder, {}, {}, {}, 0, {}, {}, failure.message()});
  }
  std::ranges::sort(listing, {}, &ListedFile::path);
  return listing;
}

}  // namespace doctor

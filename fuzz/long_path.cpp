// Paths far longer than the system takes, a letter for each name in them: their status is what one step after the other
// through the same names comes to.
#include "foundation/long_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/file_find.h"
#include "foundation/result_code.h"
#include "fuzz/support.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostNames = 5000;
// The system follows 40 in one path. It goes the whole path again, and counts on, if something is mounted meanwhile:
// only half as many are always followed.
constexpr std::size_t kMostLinks = 20;

const std::string kLongName(255, 'n');

// A few folders that lead from one to the other, for ever through "..", and what is no folder.
fs::path MakeWorld() {
  std::string pattern = fs::temp_directory_path() / "fuzz-long-path-XXXXXX";
  const fs::path root = ::mkdtemp(pattern.data());
  for (fs::path folder = root; folder != root / "a" / "a" / "a"; folder /= "a") {
    fs::create_directories(folder / kLongName);
    std::ofstream(folder / "file") << "file";
    fs::create_symlink(".", folder / "here");
    fs::create_symlink("nowhere", folder / "nowhere-link");
    fs::create_directories(folder / "a");
  }
  return root;
}

struct World {
  fs::path root = MakeWorld();
  World() = default;
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World() { fs::remove_all(root); }
};

std::string NameOf(char letter) {
  switch (letter) {
    case 'a':
      return "a";
    case 'n':
      return kLongName;
    case 'N':
      return kLongName + "n";  // No file system has such a name.
    case 'f':
      return "file";
    case 'l':
      return "here";
    case 'x':
      return "nowhere";
    case 'X':
      return "nowhere-link";
    case 'u':
      return "..";
    default:
      return ".";
  }
}

// "12ab" is "ab" twelve times: one path a line.
std::vector<std::string> Names(std::string_view line) {
  std::size_t times = 0;
  for (; !line.empty() && line[0] >= '0' && line[0] <= '9'; line.remove_prefix(1)) {
    times = (times * 10 + static_cast<std::size_t>(line[0] - '0')) % 3000;
  }
  std::vector<std::string> names;
  for (std::size_t links = 0; times-- > 0 && names.size() + line.size() < kMostNames;) {
    for (const char letter : line) {
      links += letter == 'l' || letter == 'X' ? 1 : 0;
      names.push_back(NameOf(links < kMostLinks ? letter : '.'));
    }
  }
  return names;
}

// A descriptor that this program closes.
struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { ::close(number); }
  void Become(int other) {
    ::close(number);
    number = other;
  }
  int number;
};

// Each name by itself, from the folder of the one before. The error of the first that fails.
int StatStepByStep(const fs::path& root, const std::vector<std::string>& names, struct stat& status) {
  Descriptor folder(::open(root.c_str(), O_PATH));
  for (std::size_t i = 0; i + 1 < names.size(); ++i) {
    const int next = ::openat(folder.number, names[i].c_str(), O_PATH);
    if (next < 0) {
      return errno;
    }
    folder.Become(next);
  }
  return ::fstatat(folder.number, names.back().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
}

void CheckStat(const fs::path& root, const std::vector<std::string>& names, const std::string& path) {
  struct stat expected {};
  struct stat status {};
  const int error = StatStepByStep(root, names, expected);

  const int result = tov::posix::filesystem::detail::long_path::Stat(path.c_str(), status);

  Require(result == tov::posix::ResultCodeFromSystemError(static_cast<unsigned>(error)));
  Require(error != 0 || (status.st_ino == expected.st_ino && status.st_mode == expected.st_mode));
}

void CheckOpening(const std::string& path) {
  struct stat status {};
  const bool isThere = tov::posix::filesystem::detail::long_path::Stat((path + "/.").c_str(), status) == 0;
  tov::posix::filesystem::FileFind find;
  Require((find.Open(path) == 0) == isThere);
  Require(!isThere || find.FolderPath() == path + "/");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const World world;
  Lines lines(AsText(data, size));
  const std::vector<std::string> names = Names(lines.Next());
  if (names.empty()) {
    return 0;
  }
  std::string path = world.root;
  for (const std::string& name : names) {
    path += "/" + name;
  }
  CheckStat(world.root, names, path);
  CheckOpening(path);
  return 0;
}

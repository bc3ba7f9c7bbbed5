#include "tests/support/private_root.h"

#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace tests {

namespace fs = std::filesystem;

namespace {

// Where what is hidden stays in reach until all is made.
const fs::path kOld = "/mnt";

void Require(int result, const fs::path& path) {
  if (result != 0) {
    throw std::system_error(errno, std::generic_category(), path.string());
  }
}

void MountEmptyFolder(const fs::path& folder) {
  Require(::mount("none", folder.c_str(), "tmpfs", 0, "mode=755"), folder);
}

void Show(const fs::path& path, const fs::path& at) {
  Require(::mount(path.c_str(), at.c_str(), nullptr, MS_BIND | MS_REC, nullptr), at);
}

// Brings one of the hidden entries back.
void ShowAgain(const fs::directory_entry& entry, const fs::path& folder) {
  const fs::path place = folder / entry.path().filename();
  if (entry.is_directory()) {
    fs::create_directory(place);
  } else {
    std::ofstream{place};
  }
  Show(entry.path(), place);
}

// Hides a folder behind one that has its other entries, and an empty folder for the product.
void HideProductIn(const fs::path& folder) {
  const fs::path old = kOld / folder.relative_path();
  fs::create_directories(old);
  Show(folder, old);
  MountEmptyFolder(folder);
  for (const fs::directory_entry& entry : fs::directory_iterator(old)) {
    if (entry.path().filename() != "morvath") {
      ShowAgain(entry, folder);
    }
  }
  fs::create_directory(folder / "morvath");
}

}  // namespace

void EnterPrivateRoot() {
  Require(::unshare(CLONE_NEWNS), "/");
  Require(::mount(nullptr, "/", nullptr, MS_PRIVATE | MS_REC, nullptr), "/");
  MountEmptyFolder(kOld);
  HideProductIn("/opt");
  HideProductIn("/var/opt");
  Require(::umount2(kOld.c_str(), MNT_DETACH), kOld);
}

}  // namespace tests

#include "tests/real/breakable_product.h"

#include <elf.h>
#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "tests/support/temp_folder.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr auto kNames = std::to_array<const char*>(
    {"missing", "empty", "a text", "cut to its half", "cut to its header", "full of zeros", "a folder",
     "a link to nowhere", "a pipe", "for another machine", "another file", "unreadable to the user"});

constexpr std::size_t kPeOffset = 0x3c;  // Where the header of an assembly says that its "PE" is.

std::uint16_t Read16(const std::string& bytes, std::size_t offset) {
  std::uint16_t value = 0;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

void Write16(std::string& bytes, std::size_t offset, unsigned int value) {
  const auto narrow = static_cast<std::uint16_t>(value);
  std::memcpy(bytes.data() + offset, &narrow, sizeof narrow);
}

// Of an assembly with machine code of this kind of system, the machine is written with the system's own mask.
std::string ForAnotherMachine(std::string bytes) {
  constexpr unsigned int kArm64 = 0xaa64;
  constexpr unsigned int kLinuxMask = 0x7b79;
  if (bytes.starts_with(ELFMAG)) {
    Write16(bytes, offsetof(Elf64_Ehdr, e_machine), EM_AARCH64);
  } else {
    Write16(bytes, Read16(bytes, kPeOffset) + std::size_t{4}, kArm64 ^ kLinuxMask);
  }
  return bytes;
}

// A sound file of the same kind.
const char* Other(const fs::path& file) {
  return file.extension() == ".so" ? "libSystem.IO.Compression.Native.so" : "System.Xml.Linq.dll";
}

}  // namespace

BreakableRuntime::BreakableRuntime(const Prepared& prepared) : RealRuntimeTree(prepared) {
  AddRealHost("6.0.36");
  const fs::path shared = fs::read_symlink(Root() / "shared");
  fs::remove(Root() / "shared");
  fs::create_directories(Root() / "shared");
  fs::copy(shared / "Microsoft.NETCore.App", Root() / "shared" / "Microsoft.NETCore.App", fs::copy_options::recursive);
  for (const auto& entry : fs::recursive_directory_iterator(Root() / "shared")) {
    if (entry.path().filename() == "System.Private.CoreLib.dll") {
      framework_ = entry.path().parent_path();
    }
  }
  fs::permissions(Root(), fs::perms{0755});
}

PutAside::PutAside(fs::path path, fs::path aside) : path_(std::move(path)), aside_(std::move(aside)) {
  if (fs::exists(path_)) {
    fs::rename(path_, aside_);
  }
}

PutAside::~PutAside() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  fs::rename(aside_, path_, ignored);
}

const char* NameOf(Damage damage) {
  return kNames.at(static_cast<std::size_t>(damage));
}

std::unique_ptr<PutAside> BreakableRuntime::Inflict(Damage damage, const fs::path& file) const {
  auto aside = std::make_unique<PutAside>(file);
  const fs::path& whole = aside->Aside();
  switch (damage) {
    case Damage::kMissing:
      break;
    case Damage::kEmpty:
      WriteFile(file, "");
      break;
    case Damage::kText:
      WriteFile(file, "hello\n");
      break;
    case Damage::kCut:
      WriteFile(file, ReadFile(whole).substr(0, fs::file_size(whole) / 2));
      break;
    case Damage::kHeader:
      WriteFile(file, ReadFile(whole).substr(0, 512));
      break;
    case Damage::kZeros:
      WriteFile(file, std::string(fs::file_size(whole), '\0'));
      break;
    case Damage::kFolder:
      fs::create_directory(file);
      break;
    case Damage::kDeadLink:
      fs::create_symlink("nowhere", file);
      break;
    case Damage::kPipe:
      ::mkfifo(file.c_str(), 0644);
      break;
    case Damage::kForeign:
      WriteFile(file, ForAnotherMachine(ReadFile(whole)));
      break;
    case Damage::kOtherFile:
      fs::copy_file(FrameworkFile(Other(file)), file);
      break;
    case Damage::kUnreadable:
      fs::copy_file(whole, file);
      fs::permissions(file, fs::perms::owner_read);
      break;
  }
  return aside;
}

}  // namespace tests

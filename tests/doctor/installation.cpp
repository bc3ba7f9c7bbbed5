#include "tests/doctor/installation.h"

#include <elf.h>

#include <cstring>

#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

void Empty(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) {
    fs::remove_all(entry.path());
  }
}

void EmptyAll() {
  Empty("/opt/morvath");
  Empty("/var/opt/morvath");
}

std::string Library(Elf64_Half machine) {
  Elf64_Ehdr header{};
  std::memcpy(header.e_ident, ELFMAG, SELFMAG);
  header.e_ident[EI_CLASS] = ELFCLASS64;
  header.e_ident[EI_DATA] = ELFDATA2LSB;
  header.e_type = ET_DYN;
  header.e_machine = machine;
  header.e_phoff = sizeof header;
  header.e_phentsize = sizeof(Elf64_Phdr);
  header.e_phnum = 1;
  Elf64_Phdr segment{};
  segment.p_type = PT_LOAD;
  segment.p_filesz = segment.p_memsz = 4096;
  std::string bytes(sizeof header + sizeof segment, '\0');
  std::memcpy(bytes.data(), &header, sizeof header);
  std::memcpy(bytes.data() + sizeof header, &segment, sizeof segment);
  return bytes;
}

}  // namespace

Installation::Installation() {
  EmptyAll();
}

Installation::~Installation() {
  EmptyAll();
}

Installation& Installation::Healthy() {
  return Settings("DotnetRootFolder=" + std::string(kRoot) + "\n").Application().Framework("6.0.36").Host("6.0.36");
}

Installation& Installation::Settings(std::string_view bytes) {
  WriteFile(kSettingsPath, bytes);
  return *this;
}

Installation& Installation::NoSettings() {
  return Remove(kSettingsPath);
}

Installation& Installation::Application() {
  const std::string stem(kApplication);
  WriteFile(stem + ".dll", "no real assembly");
  WriteFile(stem + ".runtimeconfig.json",
            R"({"runtimeOptions": {"framework": {"name": "Microsoft.NETCore.App", "version": "6.0.0"},
                                  "configProperties": {"System.Globalization.Invariant": true}}})");
  WriteFile(stem + ".deps.json", R"({"runtimeTarget": ""})");
  return *this;
}

Installation& Installation::Framework(std::string_view version) {
  const fs::path folder = fs::path(kRoot) / "shared/Microsoft.NETCore.App" / version;
  WriteFile(folder / "Microsoft.NETCore.App.deps.json", R"({"runtimeTarget": ""})");
  for (const char* library : {"libhostpolicy.so", "libcoreclr.so"}) {
    fs::copy_file(HostLibrary(), folder / library, fs::copy_options::overwrite_existing);
  }
  return *this;
}

Installation& Installation::Host(std::string_view version, HostVariant variant) {
  fs::create_directories(HostFile(version).parent_path());
  fs::copy_file(HostLibrary(variant), HostFile(version), fs::copy_options::overwrite_existing);
  return *this;
}

Installation& Installation::OddHost(std::string_view version, std::string_view variant) {
  fs::create_directories(HostFile(version).parent_path());
  fs::copy_file(tests::OddHost(variant), HostFile(version), fs::copy_options::overwrite_existing);
  return *this;
}

Installation& Installation::HostOfBytes(std::string_view version, std::string_view bytes) {
  WriteFile(HostFile(version), bytes);
  return *this;
}

Installation& Installation::Remove(const fs::path& path) {
  fs::remove_all(path);
  return *this;
}

fs::path Installation::HostFile(std::string_view version) {
  return fs::path(kFxrFolder) / version / "libhostfxr.so";
}

std::string CutLibrary() {
  return Library(EM_X86_64);
}

std::string ArmLibrary() {
  return Library(EM_AARCH64);
}

}  // namespace tests

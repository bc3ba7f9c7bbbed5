// Faults of the runtime's folders and of its library: what the doctor says of each, and how the launch ends.
#include <elf.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <string>

#include "tests/prediction/fault.h"
#include "tests/support/elf_image.h"
#include "tests/support/text.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using enum HostVariant;

constexpr const char* kVersion = "6.0.36";

fs::path Version(const KnownWorld& world) {
  return world.runtime.FxrFolder() / kVersion;
}

fs::path Library(const KnownWorld& world) {
  return world.runtime.HostFile(kVersion);
}

// The thing is still there outside of the folders that are searched, and a link leads to it.
void MoveBehindLink(const KnownWorld& world, const fs::path& path) {
  const fs::path real = world.runtime.Root() / "real";
  fs::rename(path, real);
  fs::create_symlink(real, path);
}

void Rename(KnownWorld& world, const char* version) {
  fs::rename(Version(world), world.runtime.FxrFolder() / version);
}

TEST(RuntimeFaults, AFolderThatIsNotAsItShouldBeIsNamed) {
  const Fault faults[] = {
      {"an empty root", [](KnownWorld& world) { fs::remove_all(world.runtime.Root() / "host"); }, "status-255",
       "no-host-folder", "no .NET runtime is installed under", "install the .NET 6.0 runtime"},
      {"no root", [](KnownWorld& world) { fs::remove_all(world.runtime.Root()); }, "status-255", "root-missing",
       "is not there", "install the .NET 6.0 runtime"},
      {"a link to nowhere for a root",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.Root());
         fs::create_symlink("nowhere", world.runtime.Root());
       },
       "status-255", "root-missing", "is not there", "install the .NET 6.0 runtime"},
      {"no fxr folder", [](KnownWorld& world) { fs::remove_all(world.runtime.FxrFolder()); }, "status-255",
       "no-host-folder", "no .NET runtime is installed under", "install the .NET 6.0 runtime"},
      {"frameworks without a host",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.Root() / "host");
         WriteFile(world.runtime.Root() / "shared" / "Microsoft.NETCore.App" / kVersion / "System.Runtime.dll", "");
       },
       "status-255", "no-host-folder", "no .NET runtime is installed under", "install the .NET 6.0 runtime"},
      {"a file for the host folder",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.Root() / "host");
         WriteFile(world.runtime.Root() / "host", "words");
       },
       "status-255", "no-host-folder", "no .NET runtime is installed under", "install"},
      {"a file for the fxr folder",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.FxrFolder());
         WriteFile(world.runtime.FxrFolder(), "words");
       },
       "status-255", "host-folder-not-a-folder", "is not a folder", "install the .NET 6.0 runtime again"},
      {"a pipe for the fxr folder",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.FxrFolder());
         ::mkfifo(world.runtime.FxrFolder().c_str(), 0644);
       },
       "status-255", "host-folder-not-a-folder", "is not a folder", "install the .NET 6.0 runtime again"},
      {"a link to the fxr folder", [](KnownWorld& world) { MoveBehindLink(world, world.runtime.FxrFolder()); },
       "status-255", "folder-is-link", "/host/fxr is a symbolic link", "cp -a"},
      {"a link to nowhere for the fxr folder",
       [](KnownWorld& world) {
         fs::remove_all(world.runtime.FxrFolder());
         fs::create_symlink("nowhere", world.runtime.FxrFolder());
       },
       "status-255", "link-to-nowhere", "/host/fxr is a symbolic link that leads nowhere", "install"},
      {"an empty fxr folder", [](KnownWorld& world) { fs::remove_all(Version(world)); }, "status-255", "no-version",
       "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"an empty version folder", [](KnownWorld& world) { fs::remove(Library(world)); }, "status-255", "no-version",
       "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"a file for the version folder",
       [](KnownWorld& world) {
         fs::remove_all(Version(world));
         WriteFile(Version(world), "words");
       },
       "status-255", "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"a link to the version folder", [](KnownWorld& world) { MoveBehindLink(world, Version(world)); }, "status-255",
       "folder-is-link", "/6.0.36 is a symbolic link", "cp -a"},
      {"a link to the library", [](KnownWorld& world) { MoveBehindLink(world, Library(world)); }, "status-255",
       "library-is-link", "libhostfxr.so is a symbolic link", "cp "},
      {"a link to nowhere for the library",
       [](KnownWorld& world) {
         fs::remove(Library(world));
         fs::create_symlink("nowhere", Library(world));
       },
       "status-255", "link-to-nowhere", "libhostfxr.so is a symbolic link that leads nowhere", "install"},
      {"a folder for the library",
       [](KnownWorld& world) {
         fs::remove(Library(world));
         fs::create_directory(Library(world));
       },
       "status-255", "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"a pipe for the library",
       [](KnownWorld& world) {
         fs::remove(Library(world));
         ::mkfifo(Library(world).c_str(), 0644);
       },
       "status-255", "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"a device for the library",
       [](KnownWorld& world) {
         fs::remove(Library(world));
         ::mknod(Library(world).c_str(), S_IFCHR | 0666, ::makedev(1, 3));
       },
       "status-255", "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"the library's name in capitals",
       [](KnownWorld& world) { fs::rename(Library(world), Version(world) / "LibHostFxr.so"); }, "status-255",
       "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"the library with a version behind its name",
       [](KnownWorld& world) { fs::rename(Library(world), Library(world).string() + ".6"); }, "status-255",
       "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"the library of Windows", [](KnownWorld& world) { fs::rename(Library(world), Version(world) / "hostfxr.dll"); },
       "status-255", "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"the library a folder too deep",
       [](KnownWorld& world) {
         fs::create_directory(Version(world) / "lib");
         fs::rename(Library(world), Version(world) / "lib" / "libhostfxr.so");
       },
       "status-255", "no-version", "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"a file system that executes nothing",
       [](KnownWorld& world) {
         ASSERT_EQ(::mount("none", world.runtime.FxrFolder().c_str(), "tmpfs", MS_NOEXEC, nullptr), 0);
         world.runtime.AddHost(kVersion);
       },
       "status-255", "noexec", "is mounted noexec", "mount -o remount,exec"},
  };
  Check(faults);
}

TEST(RuntimeFaults, VersionsThatALaunchDoesNotTakeAreNamed) {
  const Fault faults[] = {
      {"8.0 alone", [](KnownWorld& world) { Rename(world, "8.0.11"); }, "status-255", "other-runtime",
       "no .NET 6.0 runtime is installed under", "install the .NET 6.0 runtime"},
      {"5.0 alone", [](KnownWorld& world) { Rename(world, "5.0.17"); }, "status-255", "other-runtime",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"6.1 alone", [](KnownWorld& world) { Rename(world, "6.1.0"); }, "status-255", "other-runtime",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"60.0 alone", [](KnownWorld& world) { Rename(world, "60.0.1"); }, "status-255", "other-runtime",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a preview of 7.0 alone", [](KnownWorld& world) { Rename(world, "7.0.0-preview.1"); }, "status-255",
       "other-runtime", "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"two others",
       [](KnownWorld& world) {
         Rename(world, "7.0.20");
         world.runtime.AddHost("8.0.11");
       },
       "status-255", "other-runtime", "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a folder without the last number", [](KnownWorld& world) { Rename(world, "6.0"); }, "status-255",
       "other-runtime", "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a v before the number", [](KnownWorld& world) { Rename(world, "v6.0.36"); }, "status-255", "no-version",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a blank before the number", [](KnownWorld& world) { Rename(world, " 6.0.36"); }, "status-255", "no-version",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a name that is no version", [](KnownWorld& world) { Rename(world, "backup"); }, "status-255", "no-version",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a name that is not UTF-8", [](KnownWorld& world) { Rename(world, "6.0.36\xff"); }, "status-255", "no-version",
       "no .NET 6.0 runtime", "install the .NET 6.0 runtime"},
      {"a lone surrogate beside a version", [](KnownWorld& world) { world.runtime.AddHost("6.0.\xed\xa0\x80"); },
       "aborts", "version-not-text", "the name of a version folder is not valid text", "rename or remove"},
      {"a zero before the number", [](KnownWorld& world) { Rename(world, "6.0.036"); }, "runs", "",
       "A launch would run the application", ""},
      {"a word behind the number", [](KnownWorld& world) { Rename(world, "6.0.36-servicing.1"); }, "runs", "",
       "A launch would run the application", ""},
      {"no number", [](KnownWorld& world) { Rename(world, "6.0.x"); }, "runs", "", "A launch would run", ""},
      {"others beside it", [](KnownWorld& world) { world.runtime.AddHost("8.0.11").AddHost("5.0.1"); }, "runs", "",
       "A launch would run", ""},
      {"an empty newer folder", [](KnownWorld& world) { world.runtime.AddFolder("6.0.40"); }, "runs", "",
       "A launch would run", ""},
      {"links above the fxr folder", [](KnownWorld& world) { MoveBehindLink(world, world.runtime.Root() / "host"); },
       "runs", "", "A launch would run", ""},
  };
  Check(faults);
}

void PutBytes(KnownWorld& world, const std::string& bytes) {
  world.runtime.AddHostOfBytes(kVersion, bytes);
}

void PutHeader(KnownWorld& world, std::size_t offset, std::size_t width, std::uint64_t value) {
  PutBytes(world, ElfImage(ReadFile(HostLibrary())).With(offset, width, value).Bytes());
}

void PutCut(KnownWorld& world, std::size_t parts) {
  const std::string whole = ReadFile(HostLibrary());
  PutBytes(world, whole.substr(0, whole.size() * parts / 10));
}

// Another name of the same length, as the library that it needs or asks a version of.
void PutWith(KnownWorld& world, const std::string& what, const std::string& by) {
  const std::string whole = ReadFile(HostLibrary());
  ASSERT_NE(whole.find(what), std::string::npos) << what;
  PutBytes(world, Replaced(whole, what, by));
}

TEST(RuntimeFaults, AnOnlyLibraryThatDoesNotLoadIsNamed) {
  const char* const kOnly = "the only .NET 6.0 runtime, 6.0.36, cannot be loaded";
  const char* const kAgain = "install the .NET runtime 6.0.36 again";
  const char* const kOther = "is for another kind of machine";
  const char* const kInstall = "install the .NET 6.0 runtime for Linux x64";
  const Fault faults[] = {
      {"an empty file", [](KnownWorld& world) { PutBytes(world, ""); }, "status-255", "no-version-loads", kOnly,
       kAgain},
      {"a text", [](KnownWorld& world) { PutBytes(world, "no library at all\n"); }, "status-255", "no-version-loads",
       kOnly, kAgain},
      {"a page of a proxy", [](KnownWorld& world) { PutBytes(world, "<html><body>407</body></html>\n"); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"a packed file", [](KnownWorld& world) { PutBytes(world, "\x1f\x8b\x08" + std::string(5000, 'x')); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"a pointer of a large-file store", [](KnownWorld& world) { PutBytes(world, "oid sha256:0\nsize 76548\n"); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"a library of Windows", [](KnownWorld& world) { PutBytes(world, "MZ" + std::string(5000, '\0')); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"a linker's script", [](KnownWorld& world) { PutBytes(world, "INPUT(libother.so)\n"); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"zeros, as a crash leaves them",
       [](KnownWorld& world) { PutBytes(world, std::string(ReadFile(HostLibrary()).size(), '\0')); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"its first four bytes",
       [](KnownWorld& world) {
         PutBytes(world,
                  "\x7f"
                  "ELF");
       },
       "status-255", "cut-short", "is cut short", kAgain},
      {"its header alone", [](KnownWorld& world) { PutBytes(world, ReadFile(HostLibrary()).substr(0, 64)); },
       "status-255", "cut-short", "is cut short", kAgain},
      {"a tenth of it", [](KnownWorld& world) { PutCut(world, 1); }, "status-255", "cut-short", "is cut short", kAgain},
      {"half of it", [](KnownWorld& world) { PutCut(world, 5); }, "status-255", "cut-short", "is cut short", kAgain},
      {"for Arm", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_machine), 2, EM_AARCH64); },
       "status-255", "other-machine", kOther, kInstall},
      {"for Arm of 32 bits", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_machine), 2, EM_ARM); },
       "status-255", "other-machine", kOther, kInstall},
      {"for RISC-V", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_machine), 2, EM_RISCV); },
       "status-255", "other-machine", kOther, kInstall},
      {"of 32 bits", [](KnownWorld& world) { PutHeader(world, EI_CLASS, 1, ELFCLASS32); }, "status-255",
       "other-machine", kOther, kInstall},
      {"for x86 of 32 bits",
       [](KnownWorld& world) {
         PutBytes(world, ElfImage(ReadFile(HostLibrary()))
                             .With(EI_CLASS, 1, ELFCLASS32)
                             .With(offsetof(Elf64_Ehdr, e_machine), 2, EM_386)
                             .Bytes());
       },
       "status-255", "other-machine", kOther, kInstall},
      {"with the large end first", [](KnownWorld& world) { PutHeader(world, EI_DATA, 1, ELFDATA2MSB); }, "status-255",
       "other-machine", kOther, kInstall},
      {"a program", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_type), 2, ET_EXEC); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"an object file", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_type), 2, ET_REL); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"a dump of a crash", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_type), 2, ET_CORE); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"no program headers", [](KnownWorld& world) { PutHeader(world, offsetof(Elf64_Ehdr, e_phnum), 2, 0); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"the launcher", [](KnownWorld& world) { PutBytes(world, ReadFile(LauncherFile())); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"another library", [](KnownWorld& world) { PutBytes(world, ReadFile("/lib/x86_64-linux-gnu/libm.so.6")); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"no function to initialise", [](KnownWorld& world) { world.runtime.AddHost(kVersion, kLacksInitialize); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"no function to run", [](KnownWorld& world) { world.runtime.AddHost(kVersion, kLacksRun); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"no function to close", [](KnownWorld& world) { world.runtime.AddHost(kVersion, kLacksClose); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"a function that is null", [](KnownWorld& world) { world.runtime.AddHost(kVersion, kNullRun); }, "status-255",
       "no-version-loads", kOnly, kAgain},
      {"a symbol that nobody has", [](KnownWorld& world) { world.runtime.AddHost(kVersion, kUnresolved); },
       "status-255", "no-version-loads", kOnly, kAgain},
      {"a library that it needs is not there",
       [](KnownWorld& world) { PutWith(world, "libstdc++.so.6", "libstdx++.so.6"); }, "status-255", "needed-library",
       "needs libstdx++.so.6, which this system does not have", "install the package"},
      {"a version that the C library does not have",
       [](KnownWorld& world) { PutWith(world, "GLIBC_2.2.5", "GLIBC_9.2.5"); }, "status-255", "needed-library",
       "needs GLIBC_9.2.5, which this system does not have", "made for this system"},
      {"the C library of another system", [](KnownWorld& world) { PutWith(world, "libc.so.6", "libm.musl"); },
       "status-255", "needed-library", "needs libm.musl, which", "install the package"},
      {"none of two loads",
       [](KnownWorld& world) {
         PutBytes(world, "words");
         world.runtime.AddHostOfBytes("6.0.5", "");
       },
       "status-255", "no-version-loads", "none of the 2 .NET 6.0 runtimes can be loaded", kAgain},
      {"none of three loads, each for another reason",
       [](KnownWorld& world) {
         PutCut(world, 5);
         world.runtime.AddHostOfBytes("6.0.5", "words").AddHost("6.0.4", kLacksRun);
       },
       "status-255", "cut-short", "is cut short", kAgain},
  };
  Check(faults);
}

TEST(RuntimeFaults, AnOlderVersionThatHelpsOutIsNamed) {
  const char* const kWith = "A launch would run the application, with the older runtime 6.0.5";
  const char* const kAgain = "install the .NET runtime 6.0.36 again";
  const Fault faults[] = {
      {"half a library",
       [](KnownWorld& world) {
         PutCut(world, 5);
         world.runtime.AddHost("6.0.5");
       },
       "runs", "older-runtime", kWith, kAgain},
      {"an empty library",
       [](KnownWorld& world) {
         PutBytes(world, "");
         world.runtime.AddHost("6.0.5");
       },
       "runs", "older-runtime", kWith, kAgain},
      {"a library for Arm",
       [](KnownWorld& world) {
         PutHeader(world, offsetof(Elf64_Ehdr, e_machine), 2, EM_AARCH64);
         world.runtime.AddHost("6.0.5");
       },
       "runs", "older-runtime", kWith, "install the .NET 6.0 runtime for Linux x64"},
      {"a library that lacks a function",
       [](KnownWorld& world) { world.runtime.AddHost(kVersion, kLacksClose).AddHost("6.0.5"); }, "runs",
       "older-runtime", kWith, kAgain},
      {"a library that needs another",
       [](KnownWorld& world) {
         PutWith(world, "libstdc++.so.6", "libstdx++.so.6");
         world.runtime.AddHost("6.0.5");
       },
       "runs", "older-runtime", kWith, "install the package"},
      {"two that do not load",
       [](KnownWorld& world) {
         PutBytes(world, "");
         world.runtime.AddHostOfBytes("6.0.30", "words").AddHost("6.0.5");
       },
       "runs", "older-runtime", kWith, kAgain},
      {"a newer one of a later release that does not load",
       [](KnownWorld& world) { world.runtime.AddHostOfBytes("6.0.40", ""); }, "runs", "older-runtime",
       "with the older runtime 6.0.36", "install the .NET runtime 6.0.40 again"},
  };
  Check(faults);
}

}  // namespace
}  // namespace tests

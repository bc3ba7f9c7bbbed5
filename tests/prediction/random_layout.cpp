#include "tests/prediction/random_layout.h"

#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/assembly_image.h"
#include "tests/support/odd_host.h"
#include "tests/support/settings_file.h"

namespace tests {

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

using enum HostVariant;

std::seed_seq Seeds(std::uint64_t seed, std::uint64_t number) {
  return {static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32), static_cast<std::uint32_t>(number),
          static_cast<std::uint32_t>(number >> 32)};
}

const std::vector<std::string> kTails = {"",
                                         "0",
                                         "00",
                                         "08",
                                         "010",
                                         "0x10",
                                         "0xA",
                                         "0X1f",
                                         "0x",
                                         "0xg",
                                         "-1",
                                         "+7",
                                         "--1",
                                         " 7",
                                         "\t3",
                                         "7 ",
                                         "7\r",
                                         "7\n",
                                         "rc",
                                         "5-preview.3",
                                         "5.99",
                                         "4294967296",
                                         "4294967297",
                                         "99999999999999999999",
                                         "-99999999999999999999",
                                         "9223372036854775807",
                                         "٣",
                                         "7-ж😀",
                                         "😀",
                                         "'\\$(x)",
                                         "\x01",
                                         "\xff",
                                         "9\xff",
                                         "\xc0\xaf",
                                         "\xf4\x90\x80\x80",
                                         "\xed\xa0\x80",
                                         "3\xed\xb0\x80",
                                         "\xed\xa0\xbd\xed\xb8\x80",
                                         "4\xd0"};
constexpr auto kOtherNames = std::to_array<const char*>({"5.0.17", "6.0", "6.0-1", "6.1.0", "7.0.0", "8.0.11", " 6.0.1",
                                                         "v6.0.1", "60.0.1", "backup", "6", "6.", ".6.0.1", "06.0.1"});

std::string VersionName(Choice& choice) {
  if (choice.OneIn(8)) {
    return choice.Of(kOtherNames);
  }
  if (choice.OneIn(40)) {
    return "6.0." + std::string(choice.Below(200) + 1, static_cast<char>('0' + choice.Below(10)));
  }
  return "6.0." + (choice.Below(5) < 3 ? std::to_string(choice.Below(40)) : choice.Of(kTails));
}

// The runtime tree under a root.
class TreeMaker {
 public:
  TreeMaker(Choice& choice, Ground& ground, fs::path root) : choice_(choice), ground_(ground), root_(std::move(root)) {}

  void Make() {
    if (choice_.OneIn(25)) {
      MakeWithoutFolder();
      return;
    }
    if (choice_.OneIn(20)) {
      ground_.MakeFolder(root_ / "real");
      ground_.MakeLink(root_ / "host", "real");
    }
    ground_.MakeFolder(Fxr());
    for (std::size_t count = choice_.Below(6) + (choice_.OneIn(10) ? 0 : 1); count > 0; --count) {
      MakeVersion();
    }
    if (choice_.OneIn(60)) {
      ground_.TakeRights(choice_.OneIn(2) ? Fxr() : Fxr().parent_path(), Rights());
    }
  }

 private:
  fs::path Fxr() const { return root_ / "host" / "fxr"; }

  fs::perms Rights() {
    constexpr auto kRights = std::to_array<unsigned int>({0000, 0444, 0111, 0200});
    return fs::perms{choice_.Of(kRights)};
  }

  void MakeWithoutFolder() {
    switch (choice_.Below(6)) {
      case 0:
        return;
      case 1:
        return ground_.MakeFile(root_, "words");
      case 2:
        return ground_.MakeFile(root_ / "host", "words");
      case 3:
        return ground_.MakeFile(Fxr(), "words");
      case 4:
        ground_.MakeCopy(root_ / "real" / "6.0.1" / "libhostfxr.so", HostLibrary());
        return ground_.MakeLink(Fxr(), "../real");
      default:
        return ground_.MakeLink(Fxr(), "nowhere");
    }
  }

  void MakeVersion() {
    const std::string name = VersionName(choice_);
    names_.push_back(name);
    switch (choice_.Below(24)) {
      case 0:
        return ground_.MakeFile(Fxr() / name, "words");
      case 1:
        return ground_.MakeLink(Fxr() / name, Fxr() / choice_.Of(names_));
      case 2:
        MakeLibrary(Fxr() / "real" / name);
        return ground_.MakeLink(Fxr() / name, fs::path("real") / name);
      case 3:
        MakeLibrary(Fxr() / name);
        return ground_.MakeFolder(Fxr() / "other" / "deep" / choice_.Of(names_));
      case 4:
        ground_.MakeFile(Fxr() / name / "before", "x");
        MakeLibrary(Fxr() / name);
        ground_.MakeFolder(Fxr() / name / choice_.Of(names_));
        return ground_.MakeFile(Fxr() / name / "zzz", "x");
      case 5:
        return MakeLibrary(Fxr() / choice_.Of(names_) / name);
      case 6:
        MakeLibrary(Fxr() / name);
        return ground_.TakeRights(Fxr() / name, Rights());
      default:
        return MakeLibrary(Fxr() / name);
    }
  }

  void MakeLibrary(const fs::path& folder) {
    const fs::path file = folder / "libhostfxr.so";
    switch (choice_.Below(30)) {
      case 0:
        return ground_.MakeFile(file, "");
      case 1:
        return ground_.MakeFile(file, choice_.OneIn(2) ? "no library at all\n"
                                                       : "\x7f"
                                                         "ELF");
      case 2:
        return ground_.MakeFolder(file);
      case 3:
        // Never to the built library: a later step may write through the link.
        ground_.MakeCopy(root_ / "real.so", HostLibrary());
        return ground_.MakeLink(file, choice_.OneIn(2) ? root_ / "real.so" : fs::path("nowhere"));
      case 4:
        return ground_.MakeFolder(folder);
      case 5:
        return MakeHardLink(file);
      case 6:
        return MakeOdd(file);
      case 7:
        ground_.MakeCopy(file, HostLibrary());
        return ground_.TakeRights(file, Rights());
      case 8:
        return MakeOther(file);
      case 9:
        return ground_.MakeFile(folder / "LibHostFxr.so", "x");
      case 10:
      case 11:
      case 12:
        return ground_.MakeCut(file, HostLibrary(), choice_.Below(fs::file_size(HostLibrary()) + 1));
      case 13:
      case 14:
      case 15:
        return MakeWithOtherByte(file);
      case 16:
      case 17:
      case 18:
      case 19:
      case 20: {
        constexpr std::array kLacking{kLacksInitialize, kLacksRun, kLacksClose, kNullRun, kUnresolved};
        return MakeWhole(file, choice_.Of(kLacking));
      }
      default:
        return MakeWhole(file, kWhole);
    }
  }

  void MakeWhole(const fs::path& file, HostVariant variant) {
    ground_.MakeCopy(file, HostLibrary(variant));
    files_.push_back(file);
  }

  // Of one that is there; its host reports as its version the name that it was loaded under.
  void MakeHardLink(const fs::path& file) {
    if (files_.empty()) {
      MakeWhole(Fxr() / "6.0.2" / "libhostfxr.so", kWhole);
    }
    ground_.MakeHardLink(file, choice_.Of(files_));
  }

  void MakeOdd(const fs::path& file) {
    constexpr auto kOdd = std::to_array<const char*>(
        {"comes_Crash", "comes_BusError", "comes_Abort", "comes_Killed", "comes_Exit", "comes_ExitWell",
         "comes_ThrowError", "comes_ThrowNumber", "prepares_Crash", "prepares_Abort", "prepares_Exit",
         "lacks_and_goes_Crash", "lacks_and_goes_Abort", "lacks_and_goes_Exit", "refuses_and_goes_Crash",
         "refuses_and_goes_Abort", "refuses_and_goes_Exit"});
    ground_.MakeCopy(file, OddHost(choice_.Of(kOdd)));
  }

  // For another machine, word size, byte order or no library.
  void MakeOther(const fs::path& file) {
    struct Change {
      std::size_t offset;
      unsigned char value;
    };
    constexpr auto kChanges = std::to_array<Change>({{18, 183}, {18, 3}, {4, 1}, {5, 2}, {16, 2}, {16, 1}});
    const Change change = choice_.Of(kChanges);
    ground_.MakeCopy(file, HostLibrary());
    ground_.ChangeByte(file, change.offset, change.value);
  }

  void MakeWithOtherByte(const fs::path& file) {
    ground_.MakeCopy(file, HostLibrary());
    const std::size_t offset = choice_.Below(64);
    ground_.ChangeByte(file, offset, static_cast<unsigned char>(choice_.Below(256)));
  }

  Choice& choice_;
  Ground& ground_;
  fs::path root_;
  std::vector<std::string> names_;
  std::vector<fs::path> files_;
};

// The settings and what they name.
class SettingsMaker {
 public:
  SettingsMaker(Choice& choice, Ground& ground, Start& start) : choice_(choice), ground_(ground), start_(start) {}

  void Make() {
    const fs::path file = kSettingsPath;
    switch (choice_.Below(60)) {
      case 0:
        return ground_.MakeFolder(file.parent_path());
      case 1:
        return ground_.MakeFolder(file);
      case 2:
        ground_.MakeFile(file, Text());
        return ground_.TakeRights(file, fs::perms::none);
      case 3:
        ground_.MakeFile(ground_.Folder() / "elsewhere.ini", Text());
        ground_.MakeFolder(file.parent_path());
        return ground_.MakeLink(file, choice_.OneIn(3) ? "nowhere" : ground_.Folder() / "elsewhere.ini");
      case 4:
        return ground_.MakeFile(file.parent_path(), "words");
      default:
        return ground_.MakeFile(file, Text());
    }
  }

 private:
  std::string Text() {
    std::string text = choice_.OneIn(25) ? "\xef\xbb\xbf" : "";
    Noise(text);
    for (std::size_t count = choice_.OneIn(20) ? 0 : choice_.OneIn(6) ? 2 : 1; count > 0; --count) {
      text += Key() + "=" + Root() + End();
      Noise(text);
    }
    if (choice_.OneIn(8) && !text.empty()) {
      text.pop_back();
    }
    return text;
  }

  std::string Key() {
    constexpr auto kOdd = std::to_array<const char*>({"dotnetrootfolder", "DotnetRootFolder ", " DotnetRootFolder",
                                                      "\"DotnetRootFolder\"", "#DotnetRootFolder",
                                                      "\xef\xbb\xbf"
                                                      "DotnetRootFolder",
                                                      "DOTNETROOTFOLDER"});
    return choice_.OneIn(20) ? choice_.Of(kOdd) : "DotnetRootFolder";
  }

  std::string End() {
    const std::vector<std::string> odd = {"\r\n",   " \n", "\t\n", "\0\n"s,    "\0/more\n"s,
                                          "\xff\n", "\r",  "\"\n", "\0\xff\n"s};
    return choice_.OneIn(14) ? choice_.Of(odd) : "\n";
  }

  std::string Root() {
    const std::string root = ground_.Folder() / "root";
    if (choice_.Below(6) != 0) {
      return root;
    }
    start_.folder = ground_.Folder();
    const std::vector<std::string> odd = {"root",
                                          "./root",
                                          "../" + ground_.Folder().filename().string() + "/root",
                                          root + "/",
                                          root + "//",
                                          root + "/.",
                                          root + "/../root",
                                          "//" + root,
                                          root + "/host/fxr",
                                          root + "/host",
                                          root + "/host/fxr/6.0.1",
                                          ground_.Folder() / "nowhere",
                                          ground_.Folder() / "link",
                                          ground_.Folder() / "dotnet",
                                          ground_.Folder() / "dotnet" / "x",
                                          "\"" + root + "\"",
                                          " " + root,
                                          "",
                                          "/",
                                          ".",
                                          "\0"s + root,
                                          std::string(5000, 'x'),
                                          "/" + std::string(300, 'x'),
                                          ground_.Folder() / "ж😀"};
    ground_.MakeLink(ground_.Folder() / "link", "root");
    ground_.MakeLink(ground_.Folder() / "ж😀", "root");
    ground_.MakeFile(ground_.Folder() / "dotnet", "words");
    return choice_.Of(odd);
  }

  void Noise(std::string& text) {
    const std::vector<std::string> lines = {"",
                                            "\r",
                                            "[main]",
                                            "# words",
                                            "; a=b",
                                            "=x",
                                            "=",
                                            "==",
                                            "k=",
                                            "k=v=w",
                                            "ключ😀=значение",
                                            "LoaderLoggingDir=/var/log",
                                            "LoaderLoggingDir=relative",
                                            "LoaderLoggingDir=",
                                            "ProductRootDir=/x",
                                            "\0=\0"s,
                                            "no\0thing"s,
                                            "\xff\xfe\xc0",
                                            "DotnetRootFolder",
                                            "DotnetRootFolder:/x"};
    const std::vector<std::string> bad = {"k=\xff", "\x80=v", "k=\xed\xa0\x80", "k=\xc0\xaf", "k=\xd0", "k=\0\xff"s};
    for (std::size_t count = choice_.Below(4); count > 0; --count) {
      text += (choice_.OneIn(80) ? choice_.Of(bad) : choice_.Of(lines)) + "\n";
    }
  }

  Choice& choice_;
  Ground& ground_;
  Start& start_;
};

// The application beside the launcher's own folder, and its framework under the root; mostly sound.
class ApplicationMaker {
 public:
  ApplicationMaker(Choice& choice, Ground& ground) : choice_(choice), ground_(ground) {}

  void Make() {
    const fs::path framework = ground_.Folder() / "root" / "shared" / "Microsoft.NETCore.App" / "6.0.36";
    MakeUnless(40, "/opt/morvath/quor/lib64/grellin_utils.dll", AssemblyImage().bytes);
    MakeUnless(40, "/opt/morvath/quor/lib64/grellin_utils.runtimeconfig.json", Configuration());
    MakeUnless(40, framework / "Microsoft.NETCore.App.deps.json", R"({"targets": {}})");
    if (!choice_.OneIn(40)) {
      ground_.MakeCopy(framework / "libhostpolicy.so", HostLibrary());
    }
  }

 private:
  // Left out once in so many.
  void MakeUnless(std::size_t count, const fs::path& file, std::string_view bytes) {
    if (!choice_.OneIn(count)) {
      ground_.MakeFile(file, bytes);
    }
  }

  std::string Configuration() {
    const std::string sound =
        R"({"runtimeOptions": {"framework": {"name": "Microsoft.NETCore.App", "version": "6.0.0"}}})";
    constexpr auto kOdd = std::to_array<const char*>(
        {"", "{}", "[]", "words", R"({"runtimeOptions": {"framework": {"name": "Microsoft.Nothing"}}})"});
    return choice_.OneIn(15) ? choice_.Of(kOdd) : choice_.OneIn(30) ? sound.substr(0, sound.size() / 2) : sound;
  }

  Choice& choice_;
  Ground& ground_;
};

void TellHost(Choice& choice, StandInHost& host) {
  using enum HostFunction;
  switch (choice.Below(40)) {
    case 0:
    case 1: {
      constexpr auto kStatuses = std::to_array<int>({1, 2, -1, 255, 256, static_cast<int>(0x80008096)});
      host.Returns(kInitialize, choice.Of(kStatuses));
      return;
    }
    case 2:
      host.GivesNoHandle();
      return;
    case 3:
      host.Throws(kInitialize, choice.OneIn(2) ? "words" : "two\nlines");
      return;
    case 4:
      host.Throws(kInitialize, "int");
      return;
    case 5:
      host.Exits(kInitialize, choice.OneIn(2) ? 0 : 9);
      return;
    case 6:
      host.Says(kInitialize, "no framework").Returns(kInitialize, -1).SetsErrno(kInitialize, ENOENT);
      return;
    case 7:
      host.Returns(kInitialize, 1).Throws(kClose, "words");
      return;
    case 8:
      host.Returns(kRun, 7).Returns(kClose, 8);
      return;
    default:
      return;
  }
}

}  // namespace

Choice::Choice(std::uint64_t seed, std::uint64_t number) {
  auto seeds = Seeds(seed, number);
  engine_.seed(seeds);
}

void LayOut(Choice& choice, Ground& ground, StandInHost& host, Start& start) {
  start.folder = ground.Folder();
  start.reads_everything = false;
  TreeMaker(choice, ground, ground.Folder() / "root").Make();
  SettingsMaker(choice, ground, start).Make();
  ApplicationMaker(choice, ground).Make();
  host.IsStrict();
  TellHost(choice, host);
  for (const auto& [name, value] : host.Environment()) {
    if (name != "STAND_IN_RECORD") {
      ground.Note("export " + name + "=" + ShellQuoted(value));
    }
  }
  ground.Note("cd " + ShellQuoted(start.folder.native()));
}

}  // namespace tests

// Mistakes in the settings: what the doctor says of each, and how the launch ends.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

#include "tests/prediction/fault.h"
#include "tests/support/text.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

std::string Utf16(const std::string& text, bool isBigEndian) {
  std::string wide = isBigEndian ? "\xfe\xff" : "\xff\xfe";
  for (const char letter : text) {
    wide += isBigEndian ? std::string{'\0', letter} : std::string{letter, '\0'};
  }
  return wide;
}

// @ is replaced as text, so what is written in two bytes for a letter is made of the real root.
void WriteUtf16(KnownWorld& world, bool isBigEndian) {
  world.settings.Write(Utf16("DotnetRootFolder=" + world.runtime.Root().string() + "\r\n", isBigEndian));
}

void PutInPlace(void (*make)(const fs::path& file)) {
  fs::remove(kSettingsPath);
  make(kSettingsPath);
}

TEST(SettingsFaults, AMistakeInTheLineIsNamedAndMended) {
  const SettingsFault faults[] = {
      {"Windows line ends", "DotnetRootFolder=@\r\n", "status-255", "carriage-return-at-end",
       "the runtime root in the settings ends with a carriage return", "sed -i 's/\\r$//'"},
      {"Windows line ends in a file of several lines", "# words\r\nk=v\r\nDotnetRootFolder=@\r\n\r\n", "status-255",
       "carriage-return-at-end", "ends with a carriage return", "sed -i"},
      {"a carriage return without a newline", "DotnetRootFolder=@\r", "status-255", "carriage-return-at-end",
       "ends with a carriage return", "sed -i"},
      {"a blank at the end", "DotnetRootFolder=@ \n", "status-255", "blank-at-end", "ends with a blank", "sed -i"},
      {"three blanks at the end", "DotnetRootFolder=@   \n", "status-255", "blank-at-end", "ends with a blank",
       "sed -i"},
      {"a tab at the end", "DotnetRootFolder=@\t\n", "status-255", "blank-at-end", "ends with a blank", "sed -i"},
      {"a blank at the start", "DotnetRootFolder= @\n", "status-255", "blank-at-start", "begins with a blank",
       "sed -i"},
      {"a tab at the start", "DotnetRootFolder=\t@\n", "status-255", "blank-at-start", "begins with a blank", "sed -i"},
      {"quotes", "DotnetRootFolder=\"@\"\n", "status-255", "quoted-value", "stands in quotes", "sed -i"},
      {"single quotes", "DotnetRootFolder='@'\n", "status-255", "quoted-value", "stands in quotes", "sed -i"},
      {"typographic quotes", "DotnetRootFolder=“@”\n", "status-255", "typographic-quotes",
       "stands in typographic quotes", "sed -i"},
      {"low typographic quotes", "DotnetRootFolder=„@“\n", "status-255", "typographic-quotes",
       "stands in typographic quotes", "sed -i"},
      {"guillemets", "DotnetRootFolder=«@»\n", "status-255", "typographic-quotes", "stands in typographic quotes",
       "sed -i"},
      {"a blank before the key", " DotnetRootFolder=@\n", "status-255", "blank-around-key", "has a blank around it",
       "sed -i"},
      {"a blank after the key", "DotnetRootFolder =@\n", "status-255", "blank-around-key", "has a blank around it",
       "sed -i"},
      {"a tab after the key", "DotnetRootFolder\t=@\n", "status-255", "blank-around-key", "has a blank around it",
       "sed -i"},
      {"small letters", "dotnetrootfolder=@\n", "status-255", "wrong-letter-case", "differs in letter case", "sed -i"},
      {"capitals", "DOTNETROOTFOLDER=@\n", "status-255", "wrong-letter-case", "differs in letter case", "sed -i"},
      {"the name as the vendor writes it", "DotNetRootFolder=@\n", "status-255", "wrong-letter-case",
       "differs in letter case", "sed -i"},
      {"export", "export DotnetRootFolder=@\n", "status-255", "export-before-key", "begins with export", "sed -i"},
      {"a letter too few", "DotnetRootFoldr=@\n", "status-255", "key-nearly-right", "is one letter off", "sed -i"},
      {"a letter too many", "DotnetRootFolders=@\n", "status-255", "key-nearly-right", "is one letter off", "sed -i"},
      {"two letters exchanged", "DotnetRootFodler=@\n", "status-255", "key-nearly-right", "is one letter off",
       "sed -i"},
      {"another letter", "DotnetRootFolder5=@\n", "status-255", "key-nearly-right", "is one letter off", "sed -i"},
      {"a colon", "DotnetRootFolder:@\n", "status-255", "colon-for-equals", "a colon in place of the equals sign",
       "sed -i"},
      {"a byte-order mark", "\xef\xbb\xbf"s + "DotnetRootFolder=@\n", "status-255", "byte-order-mark",
       "begin with a byte-order mark", "sed -i"},
      {"the last of two is wrong", "DotnetRootFolder=@\nDotnetRootFolder=/nowhere\n", "status-255", "key-given-twice",
       "line 2 of the settings sets 'DotnetRootFolder' again", "sed -i '2d'"},
  };
  Check(faults);
}

TEST(SettingsFaults, SeveralMistakesInOneLineAreMendedTogether) {
  const SettingsFault faults[] = {
      {"quotes and a carriage return", "DotnetRootFolder=\"@\"\r\n", "status-255", "several-mistakes",
       "line 1 of the settings has several mistakes", "sed -i"},
      {"a blank and a carriage return", "DotnetRootFolder=@ \r\n", "status-255", "several-mistakes", "several mistakes",
       "sed -i"},
      {"blanks on both sides of the equals sign", "DotnetRootFolder = @\n", "status-255", "several-mistakes",
       "several mistakes", "sed -i"},
      {"export and quotes", "export DotnetRootFolder=\"@\"\n", "status-255", "several-mistakes", "several mistakes",
       "sed -i"},
      {"export, letter case, quotes and a carriage return", "export dotnetrootfolder='@'\r\n", "status-255",
       "several-mistakes", "several mistakes", "sed -i"},
      {"a byte-order mark and a carriage return", "\xef\xbb\xbf"s + "DotnetRootFolder=@\r\n", "status-255",
       "several-mistakes", "several mistakes", "sed -i"},
      {"letter case and a blank", "dotnetRootFolder= @\n", "status-255", "several-mistakes", "several mistakes",
       "sed -i"},
      {"a blank before key and colon", " DotnetRootFolder: @\n", "status-255", "colon-for-equals", "a colon", "sed -i"},
      {"a letter off and a carriage return", "DotnetRotFolder=@\r\n", "status-255", "several-mistakes",
       "several mistakes", "sed -i"},
      {"in the second line", "[main]\nDotnetRootFolder=\"@\" \n", "status-255", "several-mistakes",
       "line 2 of the settings", "sed -i"},
  };
  Check(faults);
}

TEST(SettingsFaults, AFileThatNamesNoRootIsToldSo) {
  const SettingsFault faults[] = {
      {"an empty file", "", "status-255", "no-root", "do not name a runtime root", "printf"},
      {"an empty line", "\n\n\n", "status-255", "no-root", "do not name a runtime root", "printf"},
      {"a section alone", "[main]\n", "status-255", "no-root", "do not name a runtime root", "printf"},
      {"other keys", "k=v\nLoaderLoggingDir=/var/log\n", "status-255", "no-root", "do not name a runtime root",
       "printf"},
      {"other keys without a newline at the end", "k=v", "status-255", "no-root", "do not name a runtime root",
       "printf"},
      {"an empty value", "DotnetRootFolder=\n", "status-255", "no-root", "do not name a runtime root", "printf"},
      {"the name of the variable", "DOTNET_ROOT=@\n", "status-255", "no-root", "do not name a runtime root", "printf"},
      {"a comment", "#DotnetRootFolder=@\n", "status-255", "key-nearly-right", "is one letter off", "sed -i"},
      {"only a path", "@\n", "status-255", "no-root", "do not name a runtime root", "printf"},
      {"old Macintosh line ends", "k=v\rDotnetRootFolder=@\r", "status-255", "no-root", "do not name a runtime root",
       "printf"},
      {"a NUL before the value", "DotnetRootFolder=\0@\n"s, "status-255", "no-root", "do not name a runtime root",
       "printf"},
      {"JSON", "{\n  \"DotnetRootFolder\": \"@\"\n}\n", "status-255", "no-root", "do not name a runtime root",
       "printf"},
      {"the last of two is empty", "DotnetRootFolder=@\nDotnetRootFolder=\n", "status-255", "key-given-twice",
       "line 2 of the settings sets 'DotnetRootFolder' again", "sed -i '2d'"},
  };
  Check(faults);
}

TEST(SettingsFaults, ARootThatCannotBeOneIsNamed) {
  const SettingsFault faults[] = {
      {"nowhere", "DotnetRootFolder=/nowhere/dotnet\n", "status-255", "root-missing",
       "the runtime root /nowhere/dotnet is not there", "install the .NET 6.0 runtime"},
      {"a letter wrong", "DotnetRootFolder=@x\n", "status-255", "root-missing", "is not there", "install"},
      {"two roots with a colon", "DotnetRootFolder=@:/usr/lib/dotnet\n", "status-255", "root-missing", "is not there",
       "install"},
      {"a comment behind it", "DotnetRootFolder=@ # the runtime\n", "status-255", "root-missing", "is not there",
       "install"},
      {"a semicolon behind it", "DotnetRootFolder=@;\n", "status-255", "root-missing", "is not there", "install"},
      {"a path of Windows", "DotnetRootFolder=C:\\Program Files\\dotnet\n", "status-255", "relative-root",
       "is a relative path", "name the root by its full path"},
      {"a relative path", "DotnetRootFolder=usr/share/dotnet\n", "status-255", "relative-root", "is a relative path",
       "name the root by its full path"},
      {"a dot", "DotnetRootFolder=.\n", "status-255", "relative-root", "is a relative path", "full path"},
      {"a relative path that leads there", "DotnetRootFolder=..@\n", "status-255", "relative-root",
       "is a relative path", "full path"},
      {"the root of the file system", "DotnetRootFolder=/\n", "status-255", "no-host-folder",
       "no .NET runtime is installed under /", "install"},
      {"a folder without a runtime", "DotnetRootFolder=/usr/bin\n", "status-255", "no-host-folder",
       "no .NET runtime is installed under /usr/bin", "install"},
      {"a file", "DotnetRootFolder=/bin/sh\n", "status-255", "root-is-file", "is a file", "write /"},
      {"a file taken for a folder", "DotnetRootFolder=/bin/sh/dotnet\n", "status-255", "root-missing", "is not there",
       "install"},
      {"the host folder", "DotnetRootFolder=@/host\n", "status-255", "root-is-fxr",
       "is a folder inside the installation", "write /"},
      {"the fxr folder", "DotnetRootFolder=@/host/fxr\n", "status-255", "root-is-fxr",
       "is a folder inside the installation", "write /"},
      {"the fxr folder with a slash", "DotnetRootFolder=@/host/fxr/\n", "status-255", "root-is-fxr",
       "is a folder inside the installation", "write /"},
      {"a name that is too long", "DotnetRootFolder=/" + std::string(300, 'x') + "\n", "status-255", "root-missing",
       "is not there", "install"},
      {"a path that is too long", "DotnetRootFolder=@/" + Repeated("../", 2000) + "\n", "status-255", "root-missing",
       "is not there", "install"},
  };
  Check(faults);
}

TEST(SettingsFaults, WhatIsNotUtf8IsNamedByItsLine) {
  const SettingsFault faults[] = {
      {"an umlaut of another time", "k=M\xfcller\nDotnetRootFolder=@\n", "aborts", "settings-not-utf8",
       "line 1 of the settings is not UTF-8", "iconv"},
      {"behind the root", "DotnetRootFolder=@\n# words\nk=\xe4\n", "aborts", "settings-not-utf8",
       "line 3 of the settings is not UTF-8", "iconv"},
      {"in a key", "\xe4=v\nDotnetRootFolder=@\n", "aborts", "settings-not-utf8", "line 1 of the settings", "iconv"},
      {"an overlong slash", "k=\xc0\xaf\nDotnetRootFolder=@\n", "aborts", "settings-not-utf8", "line 1 of the settings",
       "iconv"},
      {"in a comment that is a line of the file", "#k=\xe4\nDotnetRootFolder=@\n", "aborts", "settings-not-utf8",
       "line 1 of the settings", "iconv"},
  };
  Check(faults);
}

TEST(SettingsFaults, WhatLooksOddAndIsNoFaultLeavesTheDoctorGreen) {
  const SettingsFault faults[] = {
      {"no newline at the end", "DotnetRootFolder=@", "runs", "", "A launch would run the application", ""},
      {"a slash at the end", "DotnetRootFolder=@/\n", "runs", "", "A launch would run", ""},
      {"slashes and dots", "DotnetRootFolder=//@//./\n", "runs", "", "A launch would run", ""},
      {"a section", "[main]\nDotnetRootFolder=@\n", "runs", "", "A launch would run", ""},
      {"comments", "# words\n; words\nDotnetRootFolder=@\n", "runs", "", "A launch would run", ""},
      {"the last of two is right", "DotnetRootFolder=/nowhere\nDotnetRootFolder=@\n", "runs", "", "A launch would run",
       ""},
      {"a key in other letters beside it", "DotnetRootFolder=@\ndotnetrootfolder=/nowhere\n", "runs", "",
       "A launch would run", ""},
      {"Windows line ends elsewhere", "k=v\r\nDotnetRootFolder=@\nl=w\r\n", "runs", "", "A launch would run", ""},
      {"what is not UTF-8 in a line that sets nothing", "# M\xfcller\nDotnetRootFolder=@\n", "runs", "",
       "A launch would run", ""},
      {"a byte-order mark before a comment", "\xef\xbb\xbf# words\nDotnetRootFolder=@\n", "runs", "",
       "A launch would run", ""},
      {"a relative log folder", "LoaderLoggingDir=log\nDotnetRootFolder=@\n", "runs", "", "A launch would run", ""},
      {"a secret", "DbPassword=x\nDotnetRootFolder=@\n", "runs", "", "A launch would run", ""},
  };
  Check(faults);
}

TEST(SettingsFaults, WhatStandsInTheFilesPlaceIsNamed) {
  const Fault faults[] = {
      {"nothing", [](KnownWorld&) { fs::remove(kSettingsPath); }, "aborts", "settings-missing",
       "the settings file is missing", "echo DotnetRootFolder="},
      {"not even its folder", [](KnownWorld&) { fs::remove_all(fs::path(kSettingsPath).parent_path()); }, "aborts",
       "settings-folder-missing", "the folder of the settings file is missing", "mkdir -p"},
      {"a folder", [](KnownWorld&) { PutInPlace([](const fs::path& file) { fs::create_directory(file); }); },
       "status-255", "settings-are-a-folder", "the settings file is a folder", "rmdir"},
      {"a link to nowhere",
       [](KnownWorld&) { PutInPlace([](const fs::path& file) { fs::create_symlink("nowhere", file); }); }, "aborts",
       "settings-link-broken", "a symbolic link that leads nowhere", "rm "},
      {"a link to itself",
       [](KnownWorld&) { PutInPlace([](const fs::path& file) { fs::create_symlink(file, file); }); }, "aborts",
       "settings-link-broken", "a symbolic link that leads nowhere", "rm "},
      {"a link to nothing but an end",
       [](KnownWorld&) { PutInPlace([](const fs::path& file) { fs::create_symlink("/dev/null", file); }); },
       "status-255", "settings-not-a-file", "not a regular file", "rm "},
      {"a file that cannot be read",
       [](KnownWorld&) { PutInPlace([](const fs::path& file) { fs::create_symlink("/proc/self/mem", file); }); },
       "aborts", "settings-unreadable", "the settings file cannot be read",
       "write the file again, and see what the kernel says of its disk (dmesg)"},
      {"a socket",
       [](KnownWorld&) {
         PutInPlace([](const fs::path& file) {
           sockaddr_un address{AF_UNIX, {}};
           file.string().copy(address.sun_path, sizeof address.sun_path - 1);
           const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
           EXPECT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
           ::close(descriptor);
         });
       },
       "aborts", "settings-not-a-file", "not a regular file", "rm "},
      {"a pipe",
       [](KnownWorld& world) {
         PutInPlace([](const fs::path& file) { ::mkfifo(file.c_str(), 0644); });
         world.start.patience = std::chrono::milliseconds(200);
       },
       "hangs", "settings-never-end", "the settings file is a pipe", "rm "},
      {"a file where its folder should be",
       [](KnownWorld&) {
         fs::remove_all(fs::path(kSettingsPath).parent_path());
         WriteFile(fs::path(kSettingsPath).parent_path(), "words");
       },
       "aborts", "settings-folder-not-a-folder", "/var/opt/morvath/quor/common is not a folder", "mv "},
      {"the file with another ending",
       [](KnownWorld&) { fs::rename(kSettingsPath, std::string(kSettingsPath) + ".txt"); }, "aborts",
       "settings-have-an-extension", "were saved as", "mv "},
      {"a new file beside the one that was saved with another ending",
       [](KnownWorld& world) {
         fs::rename(kSettingsPath, std::string(kSettingsPath) + ".txt");
         world.settings.Write("");
       },
       "status-255", "settings-have-an-extension", "were saved as", "mv "},
      {"UTF-16 of Windows", [](KnownWorld& world) { WriteUtf16(world, false); }, "aborts", "settings-are-utf-16",
       "saved as UTF-16", "iconv"},
      {"UTF-16, the large end first", [](KnownWorld& world) { WriteUtf16(world, true); }, "aborts",
       "settings-are-utf-16", "saved as UTF-16", "iconv"},
  };
  Check(faults);
}

}  // namespace
}  // namespace tests

// Whole reports, text and JSON, against tests/doctor/golden/<situation>.txt and .json.
//
// After a wanted change: RENEW_GOLDEN=1 ctest -R GoldenReports, then read the difference before committing it.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "doctor/examine/other_roots.h"
#include "tests/doctor/installation.h"
#include "tests/support/doctor.h"
#include "tests/support/settings_file.h"
#include "tests/support/temp_folder.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

const std::string kRootLine = "DotnetRootFolder=" + std::string(kRoot) + "\n";
const std::string kStem(kApplication);

struct AskedInstallation {
  Installation installation;
  StandInHost host;
  std::map<std::string, std::string> variables = {};
};

struct Situation {
  const char* name;
  int status;
  /// Spoils a healthy installation.
  std::function<void(AskedInstallation& world)> lay;
  std::vector<std::string> arguments = {};
};

const Situation kSituations[] = {
    {"all-good", 0,
     [](AskedInstallation& world) {
       world.installation.Settings("# The product's settings.\n" + kRootLine + "LoaderLoggingDir=/var/log\nOther=1\n");
       world.installation.Host("6.0.9").Host("6.0.10");
     }},
    {"all-good-verbose", 0, [](AskedInstallation&) {}, {"--verbose"}},
    {"no-settings", 1, [](AskedInstallation& world) { world.installation.NoSettings(); }},
    {"settings-unreadable", 1, [](AskedInstallation&) { ::chmod(std::string(kSettingsPath).c_str(), 0); }},
    {"settings-not-utf8", 1,
     [](AskedInstallation& world) { world.installation.Settings("Name=caf\xe9\n" + kRootLine); }},
    {"no-root", 1, [](AskedInstallation& world) { world.installation.Settings("# nothing yet\nOther=1\n"); }},
    {"colon", 1,
     [](AskedInstallation& world) {
       world.installation.Settings("[dotnet]\nDotnetRootFolder: /opt/morvath/dotnet\n");
     }},
    {"export", 1,
     [](AskedInstallation& world) { world.installation.Settings("export DotnetRootFolder=/opt/morvath/dotnet\n"); }},
    {"letter-missing", 1,
     [](AskedInstallation& world) { world.installation.Settings("DotnetRotFolder=/opt/morvath/dotnet\n"); }},
    {"home-folder", 1, [](AskedInstallation& world) { world.installation.Settings("DotnetRootFolder=~/dotnet\n"); }},
    {"settings-are-a-folder", 1,
     [](AskedInstallation& world) {
       world.installation.NoSettings();
       fs::create_directory(kSettingsPath);
     }},
    {"settings-are-a-pipe", 1,
     [](AskedInstallation& world) {
       world.installation.NoSettings();
       ::mkfifo(std::string(kSettingsPath).c_str(), 0644);
     }},
    {"settings-with-extension", 1,
     [](AskedInstallation&) { fs::rename(kSettingsPath, std::string(kSettingsPath) + ".txt"); }},
    {"relative-root", 1,
     [](AskedInstallation& world) { world.installation.Settings("DotnetRootFolder=opt/morvath/dotnet\n"); }},
    {"carriage-return", 1,
     [](AskedInstallation& world) {
       world.installation.Settings("DotnetRootFolder=/opt/morvath/dotnet\r\nLoaderLoggingDir=/tmp\r\n");
     }},
    {"byte-order-mark", 1, [](AskedInstallation& world) { world.installation.Settings("\xEF\xBB\xBF" + kRootLine); }},
    {"quotes", 1,
     [](AskedInstallation& world) { world.installation.Settings("DotnetRootFolder=\"/opt/morvath/dotnet\"\n"); }},
    {"blanks", 1,
     [](AskedInstallation& world) { world.installation.Settings("DotnetRootFolder = /opt/morvath/dotnet \n"); }},
    {"wrong-case", 1,
     [](AskedInstallation& world) { world.installation.Settings("dotnetRootFolder=/opt/morvath/dotnet\n"); }},
    {"key-given-twice", 1,
     [](AskedInstallation& world) { world.installation.Settings(kRootLine + "DotnetRootFolder=/usr/lib/none\n"); }},
    {"root-is-fxr", 1,
     [](AskedInstallation& world) {
       world.installation.Settings("DotnetRootFolder=" + std::string(kFxrFolder) + "\n");
     }},
    {"fxr-folder-is-link", 1,
     [](AskedInstallation&) {
       fs::rename(kFxrFolder, "/opt/morvath/elsewhere");
       fs::create_symlink("/opt/morvath/elsewhere", kFxrFolder);
     }},
    {"fxr-folder-closed", 1, [](AskedInstallation&) { ::chmod(std::string(kFxrFolder).c_str(), 0); }},
    {"no-runtime", 1, [](AskedInstallation& world) { world.installation.Remove(kRoot); }},
    {"runtime-elsewhere", 1,
     [](AskedInstallation& world) {
       world.installation.Settings("DotnetRootFolder=/usr/lib/none\n");
       world.variables = {{"DOTNET_ROOT", std::string(kRoot)}};
     }},
    {"other-runtime", 1,
     [](AskedInstallation& world) {
       world.installation.Remove(Installation::HostFile("6.0.36").parent_path()).Host("7.0.20");
     }},
    {"newest-cut-short", 0, [](AskedInstallation& world) { world.installation.HostOfBytes("6.0.40", CutLibrary()); }},
    {"other-machine", 1, [](AskedInstallation& world) { world.installation.HostOfBytes("6.0.36", ArmLibrary()); }},
    {"library-is-text", 1,
     [](AskedInstallation& world) { world.installation.HostOfBytes("6.0.36", std::string(1000, '#')); }},
    {"library-is-link", 1,
     [](AskedInstallation&) {
       fs::rename(Installation::HostFile("6.0.36"), "/opt/morvath/libhostfxr.so");
       fs::create_symlink("/opt/morvath/libhostfxr.so", Installation::HostFile("6.0.36"));
     }},
    {"function-missing", 1,
     [](AskedInstallation& world) { world.installation.Host("6.0.36", HostVariant::kLacksRun); }},
    {"symbol-missing", 0,
     [](AskedInstallation& world) { world.installation.Host("6.0.40", HostVariant::kUnresolved); }},
    {"crashes-while-loading", 1,
     [](AskedInstallation& world) { world.installation.OddHost("6.0.40", "comes_BusError"); }},
    {"throws-while-loading", 1,
     [](AskedInstallation& world) { world.installation.OddHost("6.0.40", "comes_ThrowError"); }},
    {"throws-a-number", 1, [](AskedInstallation& world) { world.installation.OddHost("6.0.40", "comes_ThrowNumber"); }},
    {"exits-while-loading", 1, [](AskedInstallation& world) { world.installation.OddHost("6.0.40", "comes_Exit"); }},
    {"crash-not-tried", 0, [](AskedInstallation& world) { world.installation.OddHost("6.0.1", "comes_Crash"); }},
    {"missing-framework", 1,
     [](AskedInstallation& world) {
       world.installation.Remove(fs::path(kRoot) / "shared").Framework("7.0.20");
       world.host.Returns(HostFunction::kInitialize, static_cast<int>(0x80008096))
           .GivesNoHandle()
           .Says(HostFunction::kInitialize,
                 "You must install or update .NET to run this application.\n\n"
                 "Framework: 'Microsoft.NETCore.App', version '6.0.0' (x64)");
     }},
    {"missing-assembly", 1,
     [](AskedInstallation& world) {
       for (const char* end : {".dll", ".runtimeconfig.json", ".deps.json"}) {
         world.installation.Remove(kStem + end);
       }
       world.host.Returns(HostFunction::kInitialize, static_cast<int>(0x80008081)).GivesNoHandle();
     }},
    {"malformed-runtimeconfig", 1,
     [](AskedInstallation& world) {
       WriteFile(kStem + ".runtimeconfig.json", "{ runtimeOptions: }");
       world.host.Returns(HostFunction::kInitialize, static_cast<int>(0x80008093)).GivesNoHandle();
     }},
    {"no-probe",
     0,
     [](AskedInstallation& world) { world.installation.OddHost("6.0.40", "comes_BusError"); },
     {"--no-probe"}},
    {"what-if-root",
     0,
     [](AskedInstallation& world) { world.installation.Settings("DotnetRootFolder=/usr/lib/none\n"); },
     {"--root", std::string(kRoot)}},
    {"string-token",
     1,
     [](AskedInstallation& world) {
       fs::create_directory("/opt/morvath/$ORIGIN");
       fs::rename(kRoot, "/opt/morvath/$ORIGIN/dotnet");
       world.installation.Settings("DotnetRootFolder=/opt/morvath/$ORIGIN/dotnet\n");
     },
     {"--no-probe"}},
    {"octal-and-hexadecimal",
     0,
     [](AskedInstallation& world) { world.installation.Host("6.0.010").Host("6.0.9").Host("6.0.0x30").Host("6.0.x"); },
     {"--verbose"}},
    {"bytes-that-are-not-utf8",
     0,
     [](AskedInstallation& world) {
       fs::create_directory(std::string(kFxrFolder) + "/caf\xe9");
       world.installation.Host("6.0.\xff").Host("6.0.1\033[31m\n");
     },
     {"--verbose"}},
};

Outcome Examine(const Situation& situation, const AskedInstallation& world, const char* form) {
  std::vector<std::string> arguments = situation.arguments;
  arguments.emplace_back(form);
  return Doctor(std::move(arguments))
      .Variables(world.host.Environment())
      .Variables(world.variables)
      .WithoutReadingEverything()
      .Run();
}

// Without what differs with the version, the machine, the user and the time.
std::string Steady(const std::string& text) {
  const std::string head = std::regex_replace(text, std::regex("\ngrellin_doctor [^\n]+(\n[^\n]+)*\n"),
                                              "\ngrellin_doctor (version, machine, user, time, system)\n");
  return std::regex_replace(head, std::regex("\nMachine\n(  [^\n]*\n)+"), "\nMachine\n  (this one)\n");
}

std::string SteadyJson(const std::string& text) {
  auto report = nlohmann::ordered_json::parse(text);
  report["doctor"]["version"] = "(this one)";
  for (auto& member : report["machine"]) {
    member = member.is_array()    ? nlohmann::ordered_json::array()
             : member.is_number() ? nlohmann::ordered_json(0)
                                  : nlohmann::ordered_json();
  }
  return report.dump(2) + "\n";
}

// People and support talk about a finding by its code.
void ExpectEveryCode(const std::string& text, const std::string& json) {
  const auto report = nlohmann::json::parse(json);
  for (const auto& warning : report["warnings"]) {
    EXPECT_NE(text.find("[" + warning["code"].get<std::string>() + "]"), std::string::npos) << warning;
  }
  const auto& verdict = report["verdict"];
  if (verdict["outcome"] != "runs") {
    EXPECT_NE(text.find("[" + verdict["code"].get<std::string>() + "]"), std::string::npos) << verdict;
  }
}

void Compare(const fs::path& file, const std::string& report) {
  const char* renew = std::getenv("RENEW_GOLDEN");
  if (renew != nullptr && *renew != '\0') {
    WriteFile(file, report);
  }
  const std::string golden = fs::exists(file) ? ReadFile(file) : "";
  EXPECT_EQ(golden, report) << "Is the change wanted? Then RENEW_GOLDEN=1 writes " << file;
}

// What this machine has of .NET, so that all machines have the same. Gone with the namespace.
void HideInstalledRuntimes() {
  std::vector<std::string> folders = doctor::InstallPlaces().folders;
  folders.emplace_back("/etc/dotnet");
  for (const std::string& folder : folders) {
    if (fs::is_directory(folder)) {
      ASSERT_EQ(::mount("none", folder.c_str(), "tmpfs", 0, nullptr), 0) << folder;
    }
  }
}

TEST(GoldenReports, AreAsTheyWere) {
  HideInstalledRuntimes();
  for (const Situation& situation : kSituations) {
    SCOPED_TRACE(situation.name);
    AskedInstallation world;
    world.installation.Healthy();
    situation.lay(world);

    const Outcome text = Examine(situation, world, "--color=never");
    const Outcome json = Examine(situation, world, "--json");

    EXPECT_EQ(text.status, situation.status) << text;
    EXPECT_EQ(json.status, situation.status);
    EXPECT_EQ(text.err + json.err, "");
    Compare(fs::path(GOLDEN_FOLDER) / (std::string(situation.name) + ".txt"), Steady(text.out));
    Compare(fs::path(GOLDEN_FOLDER) / (std::string(situation.name) + ".json"), SteadyJson(json.out));
    ExpectEveryCode(text.out, json.out);
    EXPECT_EQ(world.host.VersionThatRan(), "") << "the doctor runs nothing";
    ::chmod(std::string(kFxrFolder).c_str(), 0755);
  }
}

TEST(GoldenReports, EachFileIsOfASituation) {
  std::set<std::string> names;
  for (const Situation& situation : kSituations) {
    EXPECT_TRUE(names.insert(situation.name).second) << situation.name;
  }
  for (const auto& entry : fs::directory_iterator(GOLDEN_FOLDER)) {
    EXPECT_TRUE(names.contains(entry.path().stem())) << entry.path();
  }
}

}  // namespace
}  // namespace tests

// What the application's configuration asks for, and which frameworks there are.
#include "tests/real/real_fault.h"
#include "tests/support/temp_folder.h"
#include "tests/support/text.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

constexpr const char* kConfiguration = "grellin_utils.runtimeconfig.json";
constexpr const char* kDependencies = "grellin_utils.deps.json";
constexpr const char* kRuns = "A launch would run the application.";
constexpr const char* kProductAgain = "install the product again";
constexpr const char* kNeeded = "Microsoft.NETCore.App 6.0.0 is needed";

// What stands within "runtimeOptions". FRAMEWORK, LATEST and INVARIANT stand for what the sample's own file has.
struct OptionsFault {
  const char* options;
  Words words;
  const char* wrong = nullptr;
};

std::string Options(const char* options) {
  std::string text = "{\"runtimeOptions\": {" + std::string(options) + "}}";
  text = Replaced(text, "FRAMEWORK", R"("framework": {"name": "Microsoft.NETCore.App", "version": "6.0.0"})");
  text = Replaced(text, "LATEST", R"("rollForward": "LatestMajor")");
  return Replaced(text, "INVARIANT", R"("configProperties": {"System.Globalization.Invariant": true})");
}

class ConfigurationFaultsOnRealDotnet : public FaultsOnRealDotnet {
 protected:
  void CheckOptions(const std::vector<OptionsFault>& faults) {
    for (const auto& [options, words, wrong] : faults) {
      CheckBytes(kConfiguration, {{Options(options), words, wrong}});
    }
  }

  // Each row holds the bytes of the file.
  struct BytesFault {
    std::string bytes;
    Words words;
    const char* wrong = nullptr;
  };
  void CheckBytes(const char* file, const std::vector<BytesFault>& faults) {
    for (const BytesFault& fault : faults) {
      CheckOne(fault.bytes.c_str(), fault.words, fault.wrong,
               [&](BrokenWorld& world) { world.Replace(world.File(file), fault.bytes); });
    }
  }
};

TEST_F(ConfigurationFaultsOnRealDotnet, OptionsThatTheHostRefusesAreNamed) {
  CheckOptions({
      {"LATEST", {"no-framework-named", "names no framework", kProductAgain}},
      {R"("framework": {"version": "6.0.0"}, LATEST)",
       {"invalid-configuration", "names a framework without its name", kProductAgain}},
      {R"("framework": {"name": "Microsoft.NETCore.App"}, LATEST)",
       {"invalid-configuration", "names Microsoft.NETCore.App without a version", kProductAgain}},
      {R"("framework": "Microsoft.NETCore.App")",
       {"invalid-configuration", "names a framework without its name", kProductAgain}},
      {R"("frameworks": 6)", {"invalid-configuration", "has a frameworks of another kind", kProductAgain}},
      {R"("framework": {"name": "Microsoft.NETCore.App", "version": 6}, LATEST)",
       {"invalid-configuration", "has a version of another kind", kProductAgain}},
      {R"("framework": {"name": "Microsoft.Nothing", "version": "6.0.0"}, LATEST)",
       {"missing-framework", "Microsoft.Nothing 6.0.0 is needed, and there is none", "install"}},
      {R"("framework": {"name": "Microsoft.NETCore.App", "version": "99.0.0"}, LATEST)",
       {"missing-framework", "Microsoft.NETCore.App 99.0.0 is needed, and 10", "install"}},
      {R"("framework": {"name": "Microsoft.WindowsDesktop.App", "version": "6.0.0"}, LATEST)",
       {"missing-framework", "Microsoft.WindowsDesktop.App 6.0.0 is needed, and there is none",
        "install the product for Linux"}},
      {R"("frameworks": [{"name": "Microsoft.NETCore.App", "version": "6.0.0"},
                         {"name": "Microsoft.AspNetCore.App", "version": "6.0.0"}], LATEST)",
       {"missing-framework", "Microsoft.AspNetCore.App 6.0.0 is needed, and there is none",
        "install the ASP.NET Core runtime"}},
      {"FRAMEWORK", {"missing-framework", kNeeded, "install"}},
      {R"(FRAMEWORK, "rollForward": "Minor")", {"missing-framework", kNeeded, "install"}},
      {R"(FRAMEWORK, "rollForward": "LatestPatch")", {"missing-framework", kNeeded, "install"}},
      {R"(FRAMEWORK, "rollForward": "Disable")", {"missing-framework", kNeeded, "install"}},
      {R"(FRAMEWORK, "rollForward": "Sometimes")",
       {"invalid-configuration", "sets rollForward to Sometimes, which has no meaning", kProductAgain}},
      {R"(FRAMEWORK, "rollForward": 2)", {"invalid-configuration", "has a rollForward of another kind", kProductAgain}},
      {R"(FRAMEWORK, LATEST, "rollForwardOnNoCandidateFx": 2)",
       {"invalid-configuration", "sets rollForward beside rollForwardOnNoCandidateFx", kProductAgain}},
      {R"("includedFrameworks": [{"name": "Microsoft.NETCore.App", "version": "6.0.0"}])",
       {"no-framework-named", "names no framework", kProductAgain}},
      {R"(FRAMEWORK, LATEST, "configProperties": "x")",
       {"invalid-configuration", "has a configProperties of another kind", kProductAgain}},
      {R"(FRAMEWORK, LATEST, INVARIANT,)", {"malformed-configuration", "is not JSON", kProductAgain}},
      {R"(framework: {})", {"malformed-configuration", "is not JSON", kProductAgain}},
  });
}

TEST_F(ConfigurationFaultsOnRealDotnet, OptionsThatTheRuntimeCannotStartWithAreNamed) {
  CheckOptions({
      {R"(FRAMEWORK, LATEST, "configProperties": {"System.GC.HeapHardLimit": 16})",
       {"collector-option", "System.GC.HeapHardLimit", "take System.GC.HeapHardLimit out"}},
      {R"(FRAMEWORK, LATEST, "configProperties": {"System.GC.Name": "libnone.so"})",
       {"collector-option", "System.GC.Name", "take System.GC.Name out"}},
      {R"(FRAMEWORK, LATEST, "configProperties": {"System.Globalization.AppLocalIcu": "99.1"})",
       {"no-icu", "SIGABRT: ICU, which the application needs, is missing", "install ICU"}},
  });
}

TEST_F(ConfigurationFaultsOnRealDotnet, OptionsThatLookOddAndAreAcceptedLeaveTheDoctorGreen) {
  CheckOptions({
      {"FRAMEWORK, LATEST", {"", kRuns, ""}},
      {R"("frameworks": [{"name": "Microsoft.NETCore.App", "version": "6.0.0"}], LATEST, INVARIANT)", {"", kRuns, ""}},
      {R"("framework": {"name": "Microsoft.NETCore.App", "version": "6.0"}, LATEST, INVARIANT)", {"", kRuns, ""}},
      {R"(FRAMEWORK, INVARIANT, "rollForward": "Major")", {"", kRuns, ""}},
      {R"(FRAMEWORK, INVARIANT, "rollForward": "latestmajor")", {"", kRuns, ""}},
      {R"(FRAMEWORK, INVARIANT, "rollForwardOnNoCandidateFx": 2)", {"", kRuns, ""}},
      {R"(/* words */ FRAMEWORK, LATEST, INVARIANT)", {"", kRuns, ""}},
      {"// words\nFRAMEWORK, LATEST, INVARIANT", {"", kRuns, ""}},
      {R"(FRAMEWORK, LATEST, "configProperties": {"k": 1.5})", {"", kRuns, ""}},
      {R"(FRAMEWORK, LATEST, "configProperties": {"System.GC.Server": true})", {"", kRuns, ""}},
      {R"(FRAMEWORK, LATEST, INVARIANT, "additionalProbingPaths": ["/nowhere"])", {"", kRuns, ""}},
      {"FRAMEWORK, LATEST, INVARIANT, \"k\": \"\xfc\"", {"", kRuns, ""}},
  });
}

TEST_F(ConfigurationFaultsOnRealDotnet, TheApplicationsJsonFilesAreReadAsTheHostReadsThem) {
  const std::string sound = Options("FRAMEWORK, LATEST, INVARIANT");
  CheckBytes(kConfiguration, {
                                 {"{}", {"invalid-configuration", "has no object runtimeOptions", kProductAgain}},
                                 {"[]", {"malformed-configuration", "does not hold a JSON object", kProductAgain}},
                                 {"null", {"malformed-configuration", "does not hold a JSON object", kProductAgain}},
                                 {R"({"runtimeOptions": "x"})",
                                  {"invalid-configuration", "has no object runtimeOptions", kProductAgain}},
                                 {"\xff\xfe{", {"malformed-configuration", "is not JSON", kProductAgain}},
                                 {"\xef\xbb\xbf" + sound, {"", kRuns, ""}},
                                 {sound + " words", {"", kRuns, ""}},
                             });
  const std::string library =
      R"({"runtimeTarget": {"name": "t"}, "targets": {"t": {"grellin_utils/1.0.0": {"runtime": {)";
  const std::string libraries =
      R"(}}}}, "libraries": {"grellin_utils/1.0.0": {"type": "project", "serviceable": false, "sha512": ""}}})";
  CheckBytes(kDependencies,
             {
                 {"{}", {"malformed-dependencies", "has no runtimeTarget", kProductAgain}},
                 {"[]", {"malformed-dependencies", "does not hold a JSON object", kProductAgain}},
                 {R"({"runtimeTarget": {"name": "t"}})", {"", kRuns, ""}},
                 {library + R"("grellin_utils.dll": {})" + libraries, {"", kRuns, ""}},
                 {library + R"("grellin_utils.dll": {}, "missing.dll": {})" + libraries, {"", kRuns, ""}},
                 {"\xef\xbb\xbf" + library + libraries, {"", kRuns, ""}},
             });
}

// A folder beside the framework's own.
fs::path Beside(const BrokenWorld& world, const char* version) {
  return world.runtime.Framework().parent_path() / version;
}

TEST_F(FaultsOnRealDotnet, FrameworksThatDoNotServeAreNamed) {
  Check(std::vector<RealFault>{
      {"an older one alone",
       [](BrokenWorld& world) { world.RenameFramework("5.0.17"); },
       {"missing-framework", kNeeded, "install"}},
      {"a preview of what is asked for",
       [](BrokenWorld& world) { world.RenameFramework("6.0.0-rc.1"); },
       {"missing-framework", "and 6.0.0-rc.1 is the newest", "install the .NET runtime 6.0.0"}},
      {"a name that is no version",
       [](BrokenWorld& world) { world.RenameFramework("backup"); },
       {"missing-framework", kNeeded, "install"}},
      {"a v before the version",
       [](BrokenWorld& world) { world.RenameFramework("v10.0.12"); },
       {"missing-framework", kNeeded, "install"}},
      {"a version without its last number",
       [](BrokenWorld& world) { world.RenameFramework("10.0"); },
       {"missing-framework", kNeeded, "install"}},
      {"a zero before the version",
       [](BrokenWorld& world) { world.RenameFramework("010.0.12"); },
       {"missing-framework", kNeeded, "install"}},
      {"an empty version folder",
       [](BrokenWorld& world) {
         world.RenameFramework("aside");
         fs::create_directory(world.runtime.Framework());
       },
       {"missing-framework", kNeeded, "install"}},
      {"a file for the version folder",
       [](BrokenWorld& world) { world.Replace(world.runtime.Framework(), "words"); },
       {"missing-framework", kNeeded, "install"}},
      {"a file for the framework's folder",
       [](BrokenWorld& world) { world.Replace(world.runtime.Framework().parent_path(), "words"); },
       {"missing-framework", kNeeded, "install"}},
      {"a file for the shared folder",
       [](BrokenWorld& world) { world.Replace(world.runtime.Root() / "shared", "words"); },
       {"missing-framework", kNeeded, "install"}},
      {"no shared folder",
       [](BrokenWorld& world) { world.aside.push_back(std::make_unique<PutAside>(world.runtime.Root() / "shared")); },
       {"missing-framework", kNeeded, "install"}},
      {"the framework's name in small letters",
       [](BrokenWorld& world) {
         const fs::path framework = world.runtime.Framework().parent_path();
         world.aside.push_back(
             std::make_unique<PutAside>(framework, framework.parent_path() / "microsoft.netcore.app"));
       },
       {"missing-framework", kNeeded, "install"}},
      {"a newer one that holds no more than its list of files",
       [](BrokenWorld& world) {
         world.aside.push_back(std::make_unique<PutAside>(Beside(world, "99.0.0"), Beside(world, "none")));
         WriteFile(Beside(world, "99.0.0") / "Microsoft.NETCore.App.deps.json", R"({"targets": {}})");
       },
       {"host-file-broken", "99.0.0/libhostpolicy.so is missing", "install the .NET runtime 99.0.0 again"}},
  });
}

TEST_F(FaultsOnRealDotnet, FrameworksThatServeLeaveTheDoctorGreen) {
  Check(std::vector<RealFault>{
      {"the version that is asked for", [](BrokenWorld& world) { world.RenameFramework("6.0.36"); }, {"", kRuns, ""}},
      {"a preview of a later one", [](BrokenWorld& world) { world.RenameFramework("8.0.0-rc.1"); }, {"", kRuns, ""}},
      {"a link to the version folder",
       [](BrokenWorld& world) {
         world.RenameFramework("aside");
         fs::create_directory_symlink("aside", world.runtime.Framework());
       },
       {"", kRuns, ""}},
      {"an empty newer folder",
       [](BrokenWorld& world) {
         world.aside.push_back(std::make_unique<PutAside>(Beside(world, "99.0.0"), Beside(world, "none")));
         fs::create_directory(Beside(world, "99.0.0"));
       },
       {"", kRuns, ""}},
  });
}

}  // namespace
}  // namespace tests

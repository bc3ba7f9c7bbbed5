// Which frameworks a real host takes, and which the doctor says that it takes.
#include "doctor/examine/frameworks.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "doctor/examine/probe.h"
#include "foundation/utf.h"
#include "tests/real/installed_product.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/temp_folder.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBase = "Microsoft.NETCore.App";
constexpr const char* kUpper = "Microsoft.AspNetCore.App";

// A runtime root whose frameworks hold nothing but their names, so that the host says which of them it has come to.
class Layout {
 public:
  void Add(const std::string& name, const std::string& version, const std::string& options = "") const {
    const fs::path at = folder_ / "shared" / name / version;
    tests::WriteFile(at / (name + ".deps.json"), "{}");
    if (!options.empty()) {
      tests::WriteFile(at / (name + ".runtimeconfig.json"), R"({"runtimeOptions": {)" + options + "}}");
    }
  }
  void Configure(const std::string& options) const {
    tests::WriteFile(folder_ / "app.dll", "");
    tests::WriteFile(Config(), R"({"runtimeOptions": {)" + options + "}}");
  }

  // "Microsoft.NETCore.App/6.0.5", "missing Microsoft.NETCore.App 6.0.7", "conflict", "fault"
  std::string AccordingToHost(const fs::path& host) const {
    const ContextProbe probe =
        ProbeContext(tov::text::ToUtf16(host.string()), tov::text::ToUtf16(Root()),
                     tov::text::ToUtf16((folder_ / "app.dll").string()), Patience{std::chrono::seconds(60), {}});
    std::smatch found;
    if (std::regex_search(probe.host_text, found, std::regex("was not found in '.*/shared/([^/]+/[^/']+)'"))) {
      return found[1];
    }
    if (std::regex_search(probe.host_text, found, std::regex("Framework: '([^']+)', version '([^']+)'"))) {
      return "missing " + found[1].str() + " " + found[2].str();
    }
    return static_cast<std::uint32_t>(probe.result) == 0x8000809c   ? "conflict"
           : static_cast<std::uint32_t>(probe.result) == 0x80008093 ? "fault"
                                                                    : probe.host_text;
  }

  std::string AccordingToDoctor() const {
    const RollForwardVariables variables = VariablesOfLaunch();
    const RuntimeConfig config = ReadRuntimeConfig(Config(), variables);
    const Frameworks frameworks = ResolveFrameworks(config, Root(), variables);
    if (config.fault != ConfigFault::kNone || frameworks.broken_config) {
      return "fault";
    }
    std::string base;
    for (const FrameworkReport& each : frameworks.reports) {
      if (each.taken.empty()) {
        return "missing " + each.name + " " + each.version;
      }
      base = each.name == kBase ? each.name + "/" + each.taken : base;
    }
    return frameworks.conflict ? "conflict" : base;
  }

 private:
  std::string Root() const { return (folder_ / "shared").parent_path().string(); }
  std::string Config() const { return (folder_ / "app.runtimeconfig.json").string(); }

  tests::TempFolder folder_;
};

std::string Named(const std::string& name, const std::string& version, const std::string& more = "") {
  return R"({"name": ")" + name + R"(", "version": ")" + version + "\"" + more + "}";
}

std::string Single(const std::string& version, const std::string& more = "") {
  return R"("framework": )" + Named(kBase, version) + more;
}

std::string Roll(const std::string& way) {
  return R"(, "rollForward": ")" + way + "\"";
}

std::string NoCandidate(int value) {
  return R"(, "rollForwardOnNoCandidateFx": )" + std::to_string(value);
}

constexpr const char* kNoPatches = R"(, "applyPatches": false)";

struct Variable {
  const char* name;
  const char* value;
};

struct Row {
  std::string options;
  Variable variable = {"DOTNET_ROLL_FORWARD", ""};
};

class FrameworksOfRealHost : public tests::RealDotnet {
 protected:
  void Compare(const Layout& layout, const std::vector<Row>& rows) const {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.options + " " + row.variable.name + "=" + row.variable.value);
      tests::ScopedEnvironment environment;
      environment.Set(row.variable.name, row.variable.value);
      layout.Configure(row.options);

      EXPECT_EQ(layout.AccordingToDoctor(), layout.AccordingToHost(prepared_.HostFile()));
    }
  }
};

TEST_F(FrameworksOfRealHost, AreTakenByEveryWayToRollForward) {
  const Layout layout;
  for (const char* version : {"6.0.1", "6.0.5", "6.1.0", "6.1.2", "8.0.11", "8.1.0"}) {
    layout.Add(kBase, version);
  }
  std::vector<Row> rows;
  for (const char* way : {"Disable", "LatestPatch", "Minor", "LatestMinor", "Major", "LatestMajor", "minor", "Up"}) {
    for (const char* version : {"5.0.0", "6.0.1", "6.0.3", "6.0.7", "7.0.0"}) {
      rows.push_back({Single(version, Roll(way))});
    }
  }
  Compare(layout, rows);
}

TEST_F(FrameworksOfRealHost, AreTakenByTheOlderSettingsAndTheVariables) {
  const Layout layout;
  for (const char* version : {"6.0.1", "6.0.5", "6.1.0", "6.1.2", "8.0.11"}) {
    layout.Add(kBase, version);
  }
  const Variable older{"DOTNET_ROLL_FORWARD_ON_NO_CANDIDATE_FX", "2"};
  Compare(layout, {
                      {Single("5.0.0")},
                      {Single("5.0.0", NoCandidate(0))},
                      {Single("5.0.0", NoCandidate(1))},
                      {Single("5.0.0", NoCandidate(2))},
                      {Single("6.0.7", NoCandidate(0))},
                      {Single("6.0.0", kNoPatches)},
                      {Single("6.0.0", kNoPatches + NoCandidate(0))},
                      {Single("6.0.1", kNoPatches + NoCandidate(0))},
                      {Single("6.0.0", kNoPatches + Roll("Minor"))},
                      {Single("5.0.0", Roll("Minor")), {"DOTNET_ROLL_FORWARD", "Major"}},
                      {Single("5.0.0", Roll("Major")), {"DOTNET_ROLL_FORWARD", "LatestPatch"}},
                      {Single("5.0.0"), {"DOTNET_ROLL_FORWARD", "Up"}},
                      {Single("5.0.0"), older},
                      {Single("5.0.0", Roll("Minor")), older},
                      {Single("5.0.0", NoCandidate(0)), older},
                      {R"("framework": )" + Named(kBase, "5.0.0", Roll("Major")) + Roll("Disable")},
                      {R"("framework": )" + Named(kBase, "5.0.0", NoCandidate(2)) + Roll("Disable")},
                  });
}

TEST_F(FrameworksOfRealHost, AreTakenAmongPrereleasesAndFoldersThatDoNotCount) {
  const Layout layout;
  for (const char* version : {"6.0.1", "6.0.2-preview.1", "6.0.3-rc.1", "6.1.0-alpha", "7.0.0-rc.2", "7.0.0-preview.10",
                              "7.0.0-preview.9", "6.0.09", "v6.0.7", "6.0.8.0", "backup"}) {
    layout.Add(kBase, version);
  }
  const Variable prerelease{"DOTNET_ROLL_FORWARD_TO_PRERELEASE", "1"};
  std::vector<Row> rows;
  for (const char* version : {"6.0.0", "6.0.2-alpha", "6.0.2", "6.0.4", "6.1.0-beta", "6.0", "6.0.0+build"}) {
    for (const char* way : {"Minor", "LatestMajor", "Major", "Disable"}) {
      rows.push_back({Single(version, Roll(way))});
    }
    rows.push_back({Single(version), prerelease});
  }
  Compare(layout, rows);
}

TEST_F(FrameworksOfRealHost, AreTakenForEachOther) {
  const Layout layout;
  for (const char* version : {"6.0.1", "6.0.10", "6.1.0", "7.0.1"}) {
    layout.Add(kBase, version);
  }
  layout.Add(kUpper, "6.0.1", Single("6.0.3", Roll("LatestPatch")));
  layout.Add(kUpper, "7.0.0", Single("7.0.5"));
  layout.Add(kUpper, "8.0.0", Single("6.0.0", Roll("Major")));
  layout.Add(kUpper, "9.0.0", R"("framework": {"name": "A"})");
  std::vector<Row> rows;
  for (const char* version : {"6.0.0", "7.0.0", "8.0.0", "9.0.0", "10.0.0"}) {
    for (const char* way : {"Minor", "LatestMinor"}) {
      rows.push_back({R"("framework": )" + Named(kUpper, version) + Roll(way)});
      rows.push_back({R"("frameworks": [)" + Named(kUpper, version) + ", " + Named(kBase, "6.0.2") + "]" + Roll(way)});
      rows.push_back({R"("frameworks": [)" + Named(kBase, "6.1.0") + ", " + Named(kUpper, version) + "]" + Roll(way)});
    }
  }
  Compare(layout, rows);
}

}  // namespace
}  // namespace doctor

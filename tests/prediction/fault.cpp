#include "tests/prediction/fault.h"

#include <sys/mount.h>

#include <filesystem>
#include <functional>
#include <iostream>

#include "tests/support/assembly_image.h"
#include "tests/support/opening.h"
#include "tests/support/text.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr const char* kProductFolder = "/opt/morvath/quor/lib64";
constexpr const char* kFileList = R"({"runtimeTarget": {"name": "t"}, "targets": {"t": {}}, "libraries": {}})";
constexpr const char* kVersion = "6.0.36";
// The doctor cannot know where the runtime of this world is, and names the usual folder.
std::string ForThisWorld(const std::string& cure, const KnownWorld& world) {
  return Replaced(cure, "/usr/share/dotnet", world.runtime.Root());
}

// Where the user's number is another one outside, the kernel names the owner of a file system by that one, and mount(8)
// cannot repeat it.
bool CanBeCarriedOut(const std::string& cure) {
  return !cure.starts_with("mount ") || ReadFile("/proc/self/uid_map").find("4294967295") != std::string::npos;
}

// Carried out by who may change everything. A variable is that of the doctor's next run.
void Cure(const std::string& cure, KnownWorld& world) {
  if (!CanBeCarriedOut(cure)) {
    return;
  }
  if (const auto variable = UnsetBy(cure)) {
    world.start.variables.erase(*variable);
  } else {
    CarryOut(ForThisWorld(cure, world));
  }
  EXPECT_EQ(Compare(world.host, world.start).opening.line, "A launch would run the application.") << cure;
}

// As much of the application and of its framework as the doctor reads.
void AddApplication(const RuntimeTree& runtime) {
  const fs::path application = kProductFolder;
  WriteFile(application / "grellin_utils.dll", AssemblyImage().bytes);
  WriteFile(application / "grellin_utils.deps.json", kFileList);
  WriteFile(application / "grellin_utils.runtimeconfig.json",
            R"({"runtimeOptions": {"framework": {"name": "Microsoft.NETCore.App", "version": "6.0.0"},
                                  "configProperties": {"System.Globalization.Invariant": true}}})");
  const fs::path framework = runtime.Root() / "shared" / "Microsoft.NETCore.App" / kVersion;
  WriteFile(framework / "Microsoft.NETCore.App.deps.json", kFileList);
  fs::copy_file(HostLibrary(), framework / "libhostpolicy.so");
  fs::copy_file(HostLibrary(), framework / "libcoreclr.so");
}

// What a row may leave behind where the next one lays out its product.
class Traces {
 public:
  explicit Traces(const KnownWorld& world) : world_(world) {}
  ~Traces() {
    ::umount2(world_.runtime.FxrFolder().c_str(), MNT_DETACH);
    std::error_code ignored;
    fs::remove_all("/var/opt/morvath/quor", ignored);
    fs::remove_all(kProductFolder, ignored);
  }
  Traces(const Traces&) = delete;
  Traces& operator=(const Traces&) = delete;

 private:
  const KnownWorld& world_;
};

template <typename Row>
void CheckRow(const Row& row, const std::function<void(KnownWorld& world)>& inflict) {
  SCOPED_TRACE(row.name);
  KnownWorld world;
  const Traces traces(world);
  world.runtime.AddHost(kVersion);
  AddApplication(world.runtime);
  inflict(world);

  const Comparison comparison = Compare(world.host, world.start);

  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.outcome, row.outcome);
  if (row.wrong != nullptr) {
    std::cout << "[   WRONG  ] " << row.name << ": " << row.wrong << "\n";
    return;
  }
  ExpectWords(comparison.opening, {row.code, row.cause, row.cure});
  if (IsCommand(comparison.opening.cure)) {
    Cure(comparison.opening.cure, world);
  }
}

}  // namespace

void Check(std::span<const Fault> faults) {
  for (const Fault& fault : faults) {
    CheckRow(fault, fault.inflict);
  }
}

void Check(std::span<const SettingsFault> faults) {
  for (const SettingsFault& fault : faults) {
    CheckRow(fault,
             [&](KnownWorld& world) { world.settings.Write(Replaced(fault.settings, "@", world.runtime.Root())); });
  }
}

bool ThereIsAnOrdinaryUser() {
  return Doctor({"--version"}).Before(BecomeNobody).Run().status == 0;
}

void AsOrdinaryUser(KnownWorld& world) {
  for (const fs::path& folder :
       {world.runtime.Root(), fs::path(world.host.Environment().at("STAND_IN_RECORD")).parent_path()}) {
    fs::permissions(folder, fs::perms::all);
  }
  world.start.steps.emplace_back(BecomeNobody);
}

}  // namespace tests

// What grellin_doctor says of a real runtime with a fault, and how the launch then ends.
#include "tests/support/doctor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/real/installed_product.h"

namespace tests {
namespace {

namespace fs = std::filesystem;

// A copy of the framework, to be broken.
class BreakableRuntime : public RealRuntimeTree {
 public:
  explicit BreakableRuntime(const Prepared& prepared) : RealRuntimeTree(prepared) {
    AddRealHost("6.0.36");
    const fs::path shared = fs::read_symlink(Root() / "shared");
    fs::remove(Root() / "shared");
    fs::create_directories(Root() / "shared");
    fs::copy(shared / "Microsoft.NETCore.App", Root() / "shared" / "Microsoft.NETCore.App",
             fs::copy_options::recursive);
    for (const auto& entry : fs::recursive_directory_iterator(Root() / "shared")) {
      if (entry.path().filename() == "System.Private.CoreLib.dll") {
        framework_ = entry.path().parent_path();
      }
    }
  }

  [[nodiscard]] fs::path File(const std::string& name) const { return framework_ / name; }

 private:
  fs::path framework_;
};

// A file is put aside while it lives.
class Spoiled {
 public:
  explicit Spoiled(fs::path file) : file_(std::move(file)), aside_(file_.string() + ".aside") {
    fs::rename(file_, aside_);
  }
  ~Spoiled() {
    std::error_code ignored;
    fs::remove_all(file_, ignored);
    fs::rename(aside_, file_, ignored);
  }
  Spoiled(const Spoiled&) = delete;
  Spoiled& operator=(const Spoiled&) = delete;

  [[nodiscard]] const fs::path& Path() const { return file_; }
  [[nodiscard]] std::string Half() const { return ReadFile(aside_).substr(0, fs::file_size(aside_) / 2); }

 private:
  fs::path file_;
  fs::path aside_;
};

struct Damage {
  const char* name;
  void (*inflict)(const Spoiled& file);
};

const Damage kDamages[] = {
    {"missing", [](const Spoiled&) {}},
    {"empty", [](const Spoiled& file) { WriteFile(file.Path(), ""); }},
    {"text", [](const Spoiled& file) { WriteFile(file.Path(), "hello\n"); }},
    {"cut", [](const Spoiled& file) { WriteFile(file.Path(), file.Half()); }},
    {"a folder", [](const Spoiled& file) { fs::create_directory(file.Path()); }},
};

std::string LineOf(const Outcome& launch) {
  return launch.signal != 0 ? std::string("A launch would die of SIG") + ::sigabbrev_np(launch.signal) + ":"
                            : "A launch would end with status " + std::to_string(launch.status);
}

// A sanitizer answers signals by itself, and cannot look for leaks in a process whose runtime ended it half-way.
class DoctorOnRealDotnet : public RealDotnet {
 protected:
  void SetUp() override {
    RealDotnet::SetUp();
    if (IsSanitized()) {
      GTEST_SKIP() << "a sanitizer changes how such a launch ends";
    }
  }
};

// Whether the application was reached, which writes what it runs on.
void ExpectAgreement(const Command& doctor, const Command& launcher) {
  const Outcome launch = launcher.Run();
  const Outcome report = doctor.Run();

  const bool isReached = launch.out.find("\nruntime ") != std::string::npos;
  EXPECT_EQ(report.status, isReached ? 0 : 1) << report << launch;
  EXPECT_TRUE(report.out.starts_with(isReached ? "A launch would run the application." : LineOf(launch)))
      << report << launch;
}

TEST_F(DoctorOnRealDotnet, AFileThatIsBrokenEndsALaunchAsTheDoctorSays) {
  const BreakableRuntime runtime(prepared_);
  const InstalledProduct product(prepared_, runtime.Root());
  ExpectAgreement(Doctor(), product.Start({"show"}));
  for (const fs::path& file :
       {runtime.File("System.Private.CoreLib.dll"), runtime.File("System.Runtime.dll"), runtime.File("libcoreclr.so"),
        runtime.File("libclrjit.so"), runtime.File("libSystem.Native.so"), runtime.File("libhostpolicy.so"),
        InstalledProduct::Assembly()}) {
    for (const Damage& damage : kDamages) {
      SCOPED_TRACE(file.filename().string() + " is " + damage.name);
      const Spoiled spoiled(file);
      damage.inflict(spoiled);

      ExpectAgreement(Doctor(), product.Start({"show"}));
    }
  }
}

TEST_F(DoctorOnRealDotnet, AVariableThatTheCollectorObeysEndsALaunchAsTheDoctorSays) {
  const InstalledProduct product(prepared_);
  struct Row {
    const char* variable;
    const char* value;
  };
  const Row rows[] = {
      {"DOTNET_GCHeapHardLimit", "10"}, {"DOTNET_GCPath", "/no/such/library.so"}, {"DOTNET_gcServer", "1"}};
  for (const auto& [variable, value] : rows) {
    SCOPED_TRACE(variable);
    ExpectAgreement(Doctor().Variable(variable, value), product.Start({"show"}).Variable(variable, value));
  }
}

}  // namespace
}  // namespace tests

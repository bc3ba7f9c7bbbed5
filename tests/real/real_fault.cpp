#include "tests/real/real_fault.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <iostream>

#include "tests/support/doctor.h"
#include "tests/support/launcher.h"

namespace tests {

namespace fs = std::filesystem;

namespace {

constexpr int kReached = 42;  // The sample exits with what it is given.

Command Prepared(Command command, const BrokenWorld& world) {
  command.Variables(world.variables).LeavesSignalsAlone();
  for (const auto& step : world.steps) {
    command.Before(step);
  }
  return command;
}

Outcome Launch(const BrokenWorld& world) {
  return Prepared(Launcher().Arguments({"exit", std::to_string(kReached)}), world).Run();
}

Outcome Report(const BrokenWorld& world) {
  return Prepared(Doctor({"--json"}), world).Run();
}

// What an application reaches is its own first function.
void ExpectAgreement(const Outcome& launch, const Outcome& report, const Opening& opening) {
  const bool isReached = launch.status == kReached;
  EXPECT_EQ(report.status, isReached ? 0 : 1) << opening.line << "\n" << launch;
  EXPECT_TRUE(isReached ? opening.line.starts_with("A launch would run the application")
              : opening.line.starts_with("A launch would abort:") ? launch.signal == SIGABRT
                                                                  : SaysHowItEnded(opening.line, launch))
      << opening.line << "\n"
      << launch;
}

void ExpectMended(const std::string& cure, BrokenWorld& world) {
  if (const auto variable = UnsetBy(cure)) {
    world.variables.erase(*variable);
  } else {
    CarryOut(cure);
  }
  const Outcome launch = Launch(world);
  EXPECT_EQ(launch.status, kReached) << cure << "\n" << launch;
}

void CheckRow(const Words& words, const char* wrong, BrokenWorld& world) {
  const Outcome launch = Launch(world);
  const Outcome report = Report(world);
  const auto opening = ReadOpening(report.out);
  ASSERT_TRUE(opening.has_value()) << report;
  if (wrong != nullptr) {
    std::cout << "[   WRONG  ] " << wrong << ": " << opening->line << " (" << launch.status << ", " << launch.signal
              << ")\n";
    return;
  }
  ExpectAgreement(launch, report, *opening);
  ExpectWords(*opening, words);
  if (world.can_be_mended && IsCommand(opening->cure)) {
    ExpectMended(opening->cure, world);
  }
}

bool ThereIsAnOrdinaryUser() {
  return Doctor({"--version"}).Before(BecomeNobody).Run().status == 0;
}

}  // namespace

fs::path BrokenWorld::File(const std::string& name) const {
  const fs::path application = fs::path(kProductFolder) / name;
  return name == "libhostfxr.so"   ? runtime.HostLibraryFile()
         : fs::exists(application) ? application
                                   : runtime.FrameworkFile(name);
}

void BrokenWorld::Replace(const fs::path& file, const std::string& bytes) {
  aside.push_back(std::make_unique<PutAside>(file));
  WriteFile(file, bytes);
}

void BrokenWorld::RenameFramework(const std::string& version) {
  aside.push_back(std::make_unique<PutAside>(runtime.Framework(), runtime.Framework().parent_path() / version));
}

void BrokenWorld::AsNobody() {
  steps.emplace_back(BecomeNobody);
}

void FaultsOnRealDotnet::SetUp() {
  RealDotnet::SetUp();
  if (IsSanitized()) {
    GTEST_SKIP() << "a sanitizer changes how such a launch ends";
  }
  if (!ThereIsAnOrdinaryUser()) {
    GTEST_SKIP() << "no other user can start the built programs";
  }
}

// Copied when the first row needs it.
const BreakableRuntime& FaultsOnRealDotnet::Runtime() {
  if (runtime_ == nullptr) {
    runtime_ = std::make_unique<BreakableRuntime>(prepared_);
    product_ = std::make_unique<InstalledProduct>(prepared_, runtime_->Root());
  }
  return *runtime_;
}

void FaultsOnRealDotnet::CheckOne(const std::string& name, const Words& words, const char* wrong,
                                  const std::function<void(BrokenWorld& world)>& inflict) {
  SCOPED_TRACE(name);
  BrokenWorld world{Runtime()};
  inflict(world);
  CheckRow(words, wrong, world);
}

void FaultsOnRealDotnet::Check(const std::vector<RealFault>& faults) {
  for (const RealFault& fault : faults) {
    CheckOne(fault.name, fault.words, fault.wrong, fault.inflict);
  }
}

void FaultsOnRealDotnet::Check(const std::vector<FileFault>& faults) {
  for (const FileFault& fault : faults) {
    for (const Damage damage : fault.damages) {
      CheckOne(std::string(fault.file) + " is " + NameOf(damage), fault.words, fault.wrong, [&](BrokenWorld& world) {
        if (damage == Damage::kUnreadable) {
          world.AsNobody();
        }
        world.aside.push_back(world.runtime.Inflict(damage, world.File(fault.file)));
      });
    }
  }
}

void FaultsOnRealDotnet::Check(const std::vector<VariableFault>& faults) {
  for (const VariableFault& fault : faults) {
    CheckOne(std::string(fault.variable) + "=" + fault.value, fault.words, fault.wrong,
             [&](BrokenWorld& world) { world.variables[fault.variable] = fault.value; });
  }
}

}  // namespace tests

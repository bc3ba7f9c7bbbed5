// The stand-in host resolver, seen from the test: what it is asked to do, and what it recorded.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"

namespace tests {

/// The libraries that can stand in for libhostfxr.so.
enum class HostVariant {
  kWhole,
  kLacksInitialize,
  kLacksRun,
  kLacksClose,
  kLacksStart,  ///< Cannot start a runtime without running the application.
  kNullRun,     ///< hostfxr_run_app is found, and is a null pointer.
  kUnresolved,  ///< Needs a function that nobody has, so that binding every symbol at once fails.
};

/// The built library of that variant.
[[nodiscard]] std::filesystem::path HostLibrary(HostVariant variant = HostVariant::kWhole);

/// One thing that happened in a stand-in host.
struct HostCall {
  std::string name;                                ///< loaded, initialize, run_app, close, unloaded, managed, ...
  std::string version;                             ///< the folder that the library was loaded from
  std::vector<std::string> arguments;              ///< of initialize, the assembly first
  std::map<std::string, std::string> fields;       ///< argc, size, host_path, dotnet_root, handle, file, locale, ...
  std::map<std::string, std::string> environment;  ///< of the process, as loaded, initialize and unloaded saw it

  /// The variable's value, or "(not set)".
  [[nodiscard]] std::string Variable(const std::string& name) const;
};

/// The functions of a host whose behaviour can be chosen.
enum class HostFunction {
  kInitialize,
  kRun,
  kClose,
  kStart,
  kManaged,  ///< The function of the started runtime that kStart gives.
};

/// Chooses what the stand-in hosts of a process do, through its environment, and reads back what they recorded. What
/// nothing is chosen for succeeds.
class StandInHost {
 public:
  /// `function` returns `status`.
  StandInHost& Returns(HostFunction function, int status);
  /// `function` throws std::runtime_error with the text `what`, or the number 42 for the text "int".
  StandInHost& Throws(HostFunction function, const std::string& what);
  /// `function` throws an exception of a class that only the host has, with the text `what`.
  StandInHost& ThrowsOwnClass(HostFunction function, const std::string& what);
  /// `function` writes `words` and a line end to standard error, or hands `words` to the error writer that was set.
  StandInHost& Says(HostFunction function, const std::string& words);
  /// `function` ends the process with that exit status.
  StandInHost& Exits(HostFunction function, int status);
  /// `function` ends the process with that signal.
  StandInHost& Dies(HostFunction function, int signal);
  /// `function` leaves that error number behind.
  StandInHost& SetsErrno(HostFunction function, int error);
  /// Initialising refuses an application without assembly, configuration or framework, as the documented host does.
  StandInHost& IsStrict();
  /// Initialising leaves the handle null.
  StandInHost& GivesNoHandle();

  /// The runtime is started for this type of function only; the other types are refused as invalid.
  StandInHost& OffersOnly(int type);
  /// The assemblies that the runtime is to know; without, the host does not say.
  StandInHost& Knows(const std::vector<std::filesystem::path>& assemblies);

  /// The variables that make a process's stand-in hosts obey and record.
  [[nodiscard]] const std::map<std::string, std::string>& Environment() const { return environment_; }

  /// Everything recorded so far, in order.
  [[nodiscard]] std::vector<HostCall> Calls() const;
  /// The same, each as "6.0.10 run_app".
  [[nodiscard]] std::vector<std::string> Story() const;
  /// The version whose application ran, "" when none did; "6.0.2, 6.0.1" were there several.
  [[nodiscard]] std::string VersionThatRan() const;
  /// The first call of that name; fails the test and is empty when there is none.
  [[nodiscard]] HostCall Call(const std::string& name) const;
  /// Forgets what was recorded.
  void Forget();

  StandInHost();

 private:
  StandInHost& Tell(HostFunction function, const std::string& what, const std::string& value);

  TempFolder folder_;
  std::map<std::string, std::string> environment_;
};

}  // namespace tests

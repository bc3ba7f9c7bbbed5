// Where else on this machine .NET is installed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "doctor/examine/runtime_report.h"

namespace doctor {

/// A folder that may be a runtime root.
struct RootPlace {
  std::string folder;
  std::string named_by = {};  ///< The file, variable or command that leads there; empty for a usual folder.
  bool is_meant = false;      ///< Whether the settings name it but for a mistake.
};

/// Where installers put .NET, and where they and people write down where it is.
struct InstallPlaces {
  std::vector<std::string> variables = {"DOTNET_ROOT_X64", "DOTNET_ROOT"};
  std::vector<std::string> files = {"/etc/dotnet/install_location_x64", "/etc/dotnet/install_location"};
  std::vector<std::string> folders = {"/usr/share/dotnet",
                                      "/usr/lib/dotnet",
                                      "/usr/lib64/dotnet",
                                      "/opt/dotnet",
                                      "/snap/dotnet-runtime-60/current",
                                      "/snap/dotnet-sdk/current",
                                      "/var/lib/snapd/snap/dotnet-runtime-60/current",
                                      "/var/lib/snapd/snap/dotnet-sdk/current"};
  std::string folder_at_home = ".dotnet";  ///< In the home folder; empty for none.
  std::string command = "dotnet";          ///< On the PATH; empty for none.
};

/// The places as they are now: those that variables and files name, the usual folders, the one in the home folder, and
/// that of the `dotnet` command. Relative paths are left out.
std::vector<RootPlace> RootPlaces(const InstallPlaces& places);

enum class RootState {
  kNothing,    ///< There is no host/fxr folder that can be searched.
  kNoVersion,  ///< No version fits.
  kRefused,    ///< A version fits, but it is not loaded, or the host refuses the application.
  kNotLoaded,  ///< A version looks good; nothing was loaded.
  kServes,     ///< A host of it accepts the application.
};

struct OtherRoot {
  RootPlace place;
  RootState state = RootState::kNothing;
  std::string version = {};    ///< The version that a launch would take; empty when there is none.
  bool has_framework = false;  ///< See `HasFramework`.
};

/// Whether a launch would run with it, as far as was tried. Without loading, sound files have to be enough.
bool IsUsable(const OtherRoot& root);

/// Whether a host of the root accepts the application.
using RootProber = std::function<bool(const RuntimeReport& runtime)>;

/// Looks at each place as a launch would, once where several names lead to one folder, and not at all where they lead
/// to `known`, the root that was looked at already. Ends with one that is meant and usable. Without a prober nothing is
/// loaded.
std::vector<OtherRoot> ExamineOtherRoots(const std::vector<RootPlace>& places, const std::string& known,
                                         const RootProber& prober);

/// Whether the root holds a version that fits of the framework that every application needs. A host is of no use
/// without it.
bool HasFramework(const std::string& root);

}  // namespace doctor

// The order of a launch.
#pragma once

#include <map>
#include <memory>

#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/library_interface.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

namespace netloader::quor {

/// Reads the settings, binds a runtime host and loads the assembly; does not run it. `environment` is set for the
/// runtime. Empty, with one line in the log, on every expected failure; exceptions pass. The arguments are not copied:
/// they must stay valid until the application has run. Leaves the empty logger installed, so nothing of a launch is
/// written to a log file, although its place is computed.
std::shared_ptr<LibraryInterface> InitAndLoadAssembly(const tov::WideString& loaderName,
                                                      const tov::WideString& assemblyPath, int argc, const char** argv,
                                                      const std::map<tov::WideString, tov::WideString>& environment);

namespace detail {

/// The launch from its first line in the log on, with settings of the caller's choice, whatever logger is current.
std::shared_ptr<LibraryInterface> LoadAssembly(DotnetSettingsProvider& provider, const tov::WideString& assemblyPath,
                                               int argc, const char** argv,
                                               const std::map<tov::WideString, tov::WideString>& environment);

}  // namespace detail

}  // namespace netloader::quor

// What the settings file, the environment and the executable's place mean for the loader and its log.
#pragma once

#include "foundation/strings.h"
#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"

namespace netloader::quor {

/// Fills runtime root, version prefix and product root. False when no runtime root is known: neither the settings nor
/// the caller gave one. Throws what loading the settings throws, and `tov::CheckResultFailedException` when the
/// executable's folder cannot be told.
bool TryInitNetloaderSettings(HostFxrModuleParameters& parameters);
bool TryInitNetloaderSettingsImpl(HostFxrModuleParameters& parameters);

/// Fills folder and name of the log: the folder that the settings name, else the temporary folder. Throws what loading
/// the settings throws.
void InitNetloaderLoggingSettingsOrUseDefault(logger::LoggerSettings& settings);

/// The same without the default: false, and nothing is filled, when the settings name no folder.
bool TryInitNetloaderLoggingSettingsImpl(logger::LoggerSettings& settings);

/// The temporary folder: TMP, else TEMP, else "/tmp". A variable that is set but empty counts and gives an empty
/// folder, as does one that is not UTF-8.
tov::WideString DefaultLogFolder();

}  // namespace netloader::quor

// What the settings file, the environment and the executable's place mean for the loader and its log.
#pragma once

#include "netloader/logger/logger.h"
#include "netloader/netloaderhostfxr/src/host_fxr_module_parameters.h"
#include "netloader/netloaderquorcommon/src/dotnet_settings_provider.h"

namespace netloader::quor {

/// Fills runtime root, version prefix and product root. False when no runtime root is known: neither the settings nor
/// the caller gave one. Throws what loading the settings throws, and `tov::CheckResultFailedException` when the
/// executable's folder cannot be determined.
bool TryInitNetloaderSettings(HostFxrModuleParameters& parameters);
bool TryInitNetloaderSettingsImpl(HostFxrModuleParameters& parameters);

/// Fills folder and name of the log: the folder that the settings name, else the temporary folder. Throws what loading
/// the settings throws.
void InitNetloaderLoggingSettingsOrUseDefault(logger::LoggerSettings& settings);

/// The same without the default: false, and nothing is filled, when the settings name no folder.
bool TryInitNetloaderLoggingSettingsImpl(logger::LoggerSettings& settings);

namespace detail {

/// The four functions above for a provider of the caller's choice, which they load.
bool InitLoaderSettings(DotnetSettingsProvider& provider, HostFxrModuleParameters& parameters);
bool TakeLoaderSettings(DotnetSettingsProvider& provider, HostFxrModuleParameters& parameters);
void InitLogSettings(DotnetSettingsProvider& provider, logger::LoggerSettings& settings);
bool TakeLogSettings(DotnetSettingsProvider& provider, logger::LoggerSettings& settings);

/// Fill the root, or the log's folder and name, from what the provider holds, without loading it. False, and nothing is
/// filled, when it holds no value; a value that is empty as a path is a value.
bool TakeRoot(const DotnetSettingsProvider& provider, HostFxrModuleParameters& parameters);
bool TakeLogFolder(const DotnetSettingsProvider& provider, logger::LoggerSettings& settings);

/// Fills folder and name of the log with what they are without any settings: the folder is TMP, else TEMP, else "/tmp".
/// A variable that is set but empty counts and gives an empty folder, as does one that is not UTF-8.
void UseDefaultLog(logger::LoggerSettings& settings);

}  // namespace detail

}  // namespace netloader::quor

// The fixed names of the product's settings. Created before `main`, in this order.
#pragma once

#include "foundation/strings.h"

namespace netloader::quor {

extern const tov::WideString kDotnetRootFolderKey;  ///< Its value is the .NET root.
extern const tov::WideString kLoaderLoggingDirKey;  ///< Its value is the folder of the log file.
extern const tov::WideString kProductRootDirKey;    ///< Not read: the product's root is where the executable is.
extern const tov::WideString kDotnetVersionPrefix;  ///< What the name of an acceptable runtime version begins with.
extern const tov::WideString kDefaultLogName;       ///< The log file's name without its extension.
extern const tov::WideString kCommonDataFolder;     ///< The folder of the settings file.
extern const tov::WideString kSettingsFileName;
extern const tov::WideString kDotnetFolderName;        ///< Not read.
extern const tov::WideString kTargetFrameworkName;     ///< Not read.
extern const tov::WideString kInMemorySettingsMarker;  ///< Not read: settings come from the file and nowhere else.

namespace detail {

/// The settings file's full path.
tov::WideString SettingsFilePath();

}  // namespace detail

}  // namespace netloader::quor

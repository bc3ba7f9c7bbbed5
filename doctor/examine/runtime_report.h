// Which runtimes are there, and which one a launch would take.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "doctor/child/child.h"
#include "doctor/examine/probe.h"
#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/version_discovery.h"

namespace doctor {

enum class Standing {
  kChosen,     ///< A launch takes this one.
  kNotLoaded,  ///< It looks good; whether it loads was not tried.
  kRefused,    ///< A launch passes it over.
  kFatal,      ///< A launch ends here: loading it ends the process or throws.
  kNotKnown,   ///< It was not loaded within the time limit.
};

/// Why a version is not good.
enum class VersionReason {
  kNotAFolder,  ///< It went away while it was looked at.
  kNotUtf8,     ///< All whose names are not UTF-8, together and without a name.
  kWrongPrefix,
  kNoLibrary,
  kLibraryIsLink,
  kLibraryIsNoFile,
  kRelativePath,  ///< Nothing is loaded from a relative root.
  kStringToken,   ///< Its path means another file to the dynamic loader.
  kUnreadable,    ///< From here to `kMalformed`: what the library's headers show.
  kNotElf,
  kOtherMachine,
  kNotShared,
  kCutShort,
  kMalformed,
  kLoadFailed,  ///< The dynamic loader refuses it.
  kFunctionMissing,
  kThrew,  ///< From here on: loading it did not come to its end.
  kExited,
  kCrashed,
  kTimedOut,
};

/// One version folder.
struct VersionReport {
  std::string name;
  tov::WideString library;
  bool is_candidate = false;  ///< Whether a launch would try to load it.
  Standing standing = Standing::kRefused;
  std::optional<VersionReason> reason = {};  ///< Empty for a good one.
  int result = 0;                            ///< Why the library's status cannot be read, as a result code.
  std::string words = {};                    ///< The ELF check's or the dynamic loader's.
  std::string missing_function = {};
  ChildResult child{ChildEnd::kFinished};  ///< How loading it ended.
};

struct RuntimeReport {
  tov::WideString root;
  netloader::Discovery discovery;
  std::string failure;                  ///< What putting the candidates in order throws; empty when nothing.
  std::vector<VersionReport> versions;  ///< The candidates as a launch tries them, then the others by name.
  std::optional<std::size_t> decisive;  ///< The version that is chosen, or that ends a launch.

  const VersionReport* Decisive() const { return decisive ? &versions[*decisive] : nullptr; }
};

/// Loads a library in a child.
using LibraryProber = std::function<LibraryProbe(const tov::WideString& path)>;

/// Looks for hosts under the root as the launcher does. No candidate is loaded after the one that decides. Without a
/// prober none is loaded, and the first one whose headers are sound decides.
RuntimeReport ExamineRuntime(const tov::WideString& root, const LibraryProber& prober);

}  // namespace doctor

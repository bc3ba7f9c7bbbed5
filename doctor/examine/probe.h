// Loading a host and asking it for a context, in a child process that may not survive it.
#pragma once

#include <cstdint>
#include <string>

#include "doctor/child/child.h"
#include "doctor/child/patience.h"
#include "foundation/strings.h"

namespace doctor {

/// What came of loading a library. `error` and `missing` mean something when the child finished.
struct LibraryProbe {
  ChildResult child = {};
  std::string error = {};    ///< The loader's words; empty when the library is good.
  std::string missing = {};  ///< The function that it lacks, if that is the reason.

  bool IsGood() const { return child.end == ChildEnd::kFinished && error.empty(); }
};

/// Loads the library and looks its functions up as the launcher does, in the launcher's environment.
LibraryProbe ProbeLibrary(const tov::WideString& path, const Patience& patience);

/// What came of creating a context. All but `child` mean something when the child finished.
struct ContextProbe {
  ChildResult child = {};
  std::int32_t result = 0;  ///< The host's status code.
  bool has_handle = false;
  std::uint32_t error = 0;      ///< errno after the call.
  std::string host_text = {};   ///< What the host wrote through its error writer.
  std::string assemblies = {};  ///< The assemblies that the runtime is to know, parted by colons; empty when not known.

  bool IsUsable() const { return child.end == ChildEnd::kFinished && result == 0 && has_handle; }
};

/// Has the host library create the context that a launch without arguments would create, and closes it. Nothing managed
/// runs.
ContextProbe ProbeContext(const tov::WideString& library, const tov::WideString& dotnetRoot,
                          const tov::WideString& assembly, const Patience& patience);

}  // namespace doctor

// Starting the runtime for an application without running any of it, in a child process that may not survive it.
#pragma once

#include <cstdint>
#include <string>

#include "doctor/child/child.h"
#include "doctor/child/patience.h"
#include "foundation/strings.h"

namespace doctor {

/// What came of it. All but `child` mean something when the child finished.
struct StartProbe {
  ChildResult child = {};
  bool was_tried = false;      ///< False when the host cannot start a runtime without running the application.
  std::int32_t result = 0;     ///< The runtime's result, or the host's status, when it was tried.
  std::string host_text = {};  ///< What the host wrote through its error writer.

  bool HasStarted() const { return child.end == ChildEnd::kFinished && was_tried && result == 0; }
  /// A start that was not tried has not failed.
  bool HasFailed() const { return child.end != ChildEnd::kFinished || (was_tried && result != 0); }
};

/// Has the host library start the runtime that a launch without arguments would start. The assembly is not loaded.
StartProbe ProbeStart(const tov::WideString& library, const tov::WideString& dotnetRoot,
                      const tov::WideString& assembly, const Patience& patience);

}  // namespace doctor

// A host that is opened and asked for a context as a launch does it. For the work of a child process, which it may end.
#pragma once

#include <optional>
#include <string>

#include "doctor/child/child.h"
#include "foundation/strings.h"
#include "netloader/netloaderhostfxr/src/host_binding.h"
#include "netloader/netloaderhostfxr/src/host_context.h"

namespace doctor {

struct AskedHost {
  netloader::HostBinding binding;
  netloader::HostContext context = {};

  /// The function of that name in the library; null when there is none.
  void* Function(const char* name) const;
};

/// Applies the launch's environment, opens the library and has it create the context of a launch without arguments.
/// What the host says goes to `HostWords()`. The context is not closed. Nothing when the host cannot be bound.
std::optional<AskedHost> AskHost(const tov::WideString& path, const tov::WideString& root,
                                 const tov::WideString& assembly);

/// The end of the work of a child whose host could be bound before, and cannot any more.
inline const Answer kNoHost = {};

/// Throws `std::runtime_error` when that is how a child answered: what was found about the host is no longer so.
void RequireHost(const ChildResult& child, const tov::WideString& path);

/// The beginning of what the host wrote through its error writer, line by line.
const std::string& HostWords();

/// The variables that a launch sets and removes, applied to this process.
void ApplyLaunchEnvironment();

}  // namespace doctor

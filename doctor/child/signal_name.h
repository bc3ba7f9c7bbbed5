// The names of signals.
#pragma once

#include <string>

namespace doctor {

/// "SIGBUS"; "signal 42" for one without a name.
std::string SignalName(int signal);

}  // namespace doctor

// How long a child is waited for, and who hears of it.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "doctor/child/child.h"

namespace doctor {

/// How long a child may take unless somebody says otherwise.
inline constexpr std::chrono::milliseconds kTimeLimit = std::chrono::seconds(10);

struct Patience {
  std::chrono::milliseconds limit = kTimeLimit;
  /// Told what is waited for once a child takes long, raw bytes, and "" when that wait is over.
  std::function<void(const std::string& what)> waiting_for = {};
};

/// `RunInChild` for the work that `what` names, such as "loading /root/libhostfxr.so".
ChildResult RunInChild(const std::function<Answer()>& work, const std::string& what, const Patience& patience);

}  // namespace doctor

// The link to the running executable, with a text of the test's choice.
#pragma once

#include <string>

namespace tests {

/// While it lives, every link that is read holds `text`.
class ScriptedLink {
 public:
  explicit ScriptedLink(std::string text);
  ~ScriptedLink();
  ScriptedLink(const ScriptedLink&) = delete;
  ScriptedLink& operator=(const ScriptedLink&) = delete;
};

/// While it lives, no link can be read, for the reason `error`.
class UnreadableLink {
 public:
  explicit UnreadableLink(int error);
  ~UnreadableLink();
  UnreadableLink(const UnreadableLink&) = delete;
  UnreadableLink& operator=(const UnreadableLink&) = delete;
};

}  // namespace tests

// How a child's work ended, as bytes that the child leaves to its parent.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "doctor/child/child.h"

namespace doctor {

/// An end that work comes to by itself (`kFinished`, `kThrew`, `kThrewUnknown`), and the texts that go with it.
struct WorkEnd {
  ChildEnd end;
  Answer texts;
};

/// The bytes for it, at most `SharedText::kLongest`: texts that are too long are cut short, and keep their places.
std::string Encode(const WorkEnd& work);

/// What the bytes say; empty for bytes that `Encode` does not write. There are none of a child that exited on its own,
/// and one that went astray may have written anything.
std::optional<WorkEnd> Decode(std::string_view bytes);

}  // namespace doctor

// What a managed assembly says of itself, and what its first function takes.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace doctor {

struct ManagedAssembly {
  std::string name = {};                       ///< Its own name, which the runtime compares with the one it looks for.
  bool has_entry_point = false;                ///< Whether it has a first function.
  std::vector<std::string> references = {};    ///< The assemblies that any of its code names.
  std::vector<std::string> first_needed = {};  ///< The assemblies that are loaded before the first function runs.
};

/// Reads the metadata of the assembly. Empty for a file that cannot be read, is larger than 64 MiB or contradicts
/// itself.
std::optional<ManagedAssembly> ReadManagedAssembly(const std::string& path);

}  // namespace doctor

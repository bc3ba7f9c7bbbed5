// What a process is permitted and limited to, as far as a runtime depends on it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace doctor {

struct Surroundings {
  bool may_execute_written_memory = true;           ///< Whether memory that was written may be made executable.
  bool has_memory_files = true;                     ///< Whether the kernel gives files that exist in memory only.
  std::optional<std::uint64_t> address_space = {};  ///< The limit in bytes; empty when there is none.
  std::optional<std::uint64_t> open_files = {};     ///< The same for open descriptors.
  std::optional<std::uint64_t> file_size = {};      ///< The same for the size of a file, in bytes.
  std::optional<std::uint64_t> data = {};           ///< The same for memory that holds data.
  std::optional<std::uint64_t> stack = {};          ///< The same for the stack of the first thread.
  std::optional<std::uint64_t> group_memory = {};   ///< The limit of the control group in bytes.
  /// The variables that limit or replace the garbage collector, with their values.
  std::vector<std::pair<std::string, std::string>> collector_variables = {};
  /// The same for the compiler.
  std::vector<std::pair<std::string, std::string>> compiler_variables = {};
};

/// Looks at this process; what it starts inherits all of it.
Surroundings LookAround();

}  // namespace doctor

#include "doctor/examine/machine/surroundings.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <limits>

#include "foundation/file_descriptor.h"

namespace doctor {
namespace {

// Both spellings are obeyed. A launch removes GCName.
constexpr auto kPrefixes = std::to_array<const char*>({"DOTNET_", "COMPlus_"});
constexpr auto kCollectorVariables = std::to_array<const char*>(
    {"GCHeapHardLimit", "GCHeapHardLimitPercent", "GCRegionRange", "GCRegionSize", "GCPath"});
constexpr auto kCompilerVariables = std::to_array<const char*>({"AltJit", "AltJitName", "JitName", "JitPath"});

// Refused with EACCES or EPERM where a service manager, the kernel or a security policy forbids it.
bool MayExecuteWrittenMemory() {
  const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  void* page = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) {
    return true;  // For want of memory, which is another matter.
  }
  *static_cast<char*>(page) = 1;
  const bool isRefused = ::mprotect(page, size, PROT_READ | PROT_EXEC) != 0 && (errno == EACCES || errno == EPERM);
  ::munmap(page, size);
  return !isRefused;
}

bool HasMemoryFiles() {
  const tov::posix::FileDescriptor file(static_cast<int>(::syscall(SYS_memfd_create, "doctor", 1U)));
  return file.IsOpen() || (errno != ENOSYS && errno != EPERM);
}

std::optional<std::uint64_t> Limit(decltype(RLIMIT_AS) what) {
  rlimit limit{};
  return ::getrlimit(what, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY
             ? std::optional<std::uint64_t>(limit.rlim_cur)
             : std::nullopt;
}

// The line of the one hierarchy: "0::/system.slice/quor.service".
std::string ControlGroup() {
  std::ifstream file("/proc/self/cgroup");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("0::")) {
      return line.substr(3);
    }
  }
  return {};
}

// The smallest of those on the way up, as each holds for everything below it.
std::optional<std::uint64_t> GroupMemory() {
  std::uint64_t smallest = std::numeric_limits<std::uint64_t>::max();
  for (std::string group = ControlGroup(); group.starts_with('/'); group.erase(group.rfind('/'))) {
    std::ifstream file("/sys/fs/cgroup" + group + "/memory.max");
    if (std::uint64_t bytes = 0; file >> bytes && bytes < smallest) {
      smallest = bytes;
    }
  }
  return smallest != std::numeric_limits<std::uint64_t>::max() ? std::optional(smallest) : std::nullopt;
}

template <std::size_t kSize>
std::vector<std::pair<std::string, std::string>> SetVariables(const std::array<const char*, kSize>& names) {
  std::vector<std::pair<std::string, std::string>> found;
  for (const char* prefix : kPrefixes) {
    for (const char* name : names) {
      const std::string variable = std::string(prefix) + name;
      if (const char* value = std::getenv(variable.c_str())) {
        found.emplace_back(variable, value);
      }
    }
  }
  return found;
}

}  // namespace

Surroundings LookAround() {
  Surroundings found;
  found.may_execute_written_memory = MayExecuteWrittenMemory();
  found.has_memory_files = HasMemoryFiles();
  found.address_space = Limit(RLIMIT_AS);
  found.open_files = Limit(RLIMIT_NOFILE);
  found.file_size = Limit(RLIMIT_FSIZE);
  found.data = Limit(RLIMIT_DATA);
  found.stack = Limit(RLIMIT_STACK);
  found.group_memory = GroupMemory();
  found.collector_variables = SetVariables(kCollectorVariables);
  found.compiler_variables = SetVariables(kCompilerVariables);
  return found;
}

}  // namespace doctor

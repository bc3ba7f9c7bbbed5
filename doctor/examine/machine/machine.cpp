#include "doctor/examine/machine/machine.h"

#include <gnu/libc-version.h>
#include <grp.h>
#include <pwd.h>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string_view>

namespace doctor {
namespace {

std::string UserName(uid_t id) {
  const passwd* entry = ::getpwuid(id);
  return entry != nullptr ? entry->pw_name : std::string();
}

std::string GroupName(gid_t id) {
  const group* entry = ::getgrgid(id);
  return entry != nullptr ? entry->gr_name : std::to_string(id);
}

std::vector<std::string> GroupNames() {
  std::vector<gid_t> ids(static_cast<std::size_t>(std::max(::getgroups(0, nullptr), 0)));
  const int count = ::getgroups(static_cast<int>(ids.size()), ids.data());
  ids.resize(static_cast<std::size_t>(std::max(count, 0)));
  std::erase(ids, ::getegid());
  std::vector<std::string> names = {GroupName(::getegid())};
  for (const gid_t id : ids) {
    names.push_back(GroupName(id));
  }
  return names;
}

std::string Time() {
  ::tzset();
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (::localtime_r(&now, &local) == nullptr) {
    return {};
  }
  std::array<char, 64> text{};
  std::string time(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &local));
  return time.size() < 5 ? time : time.insert(time.size() - 2, 1, ':');
}

// The value of a line of os-release, which stands between quotes where it has blanks.
std::string Unquoted(std::string_view value) {
  const bool isQuoted = value.size() > 1 && value.front() == '"' && value.back() == '"';
  return std::string(isQuoted ? value.substr(1, value.size() - 2) : value);
}

std::string System() {
  constexpr std::string_view kName = "NAME=";
  constexpr std::string_view kVersion = "VERSION_ID=";
  constexpr std::string_view kSuffix = " GNU/Linux";
  std::ifstream file("/etc/os-release");
  std::string name;
  std::string version;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(kName)) {
      name = Unquoted(std::string_view(line).substr(kName.size()));
    } else if (line.starts_with(kVersion)) {
      version = Unquoted(std::string_view(line).substr(kVersion.size()));
    }
  }
  name.erase(name.size() - (name.ends_with(kSuffix) ? kSuffix.size() : 0));
  return version.empty() ? name : name.append(" ").append(version);
}

struct NamedLimit {
  const char* name;
  decltype(RLIMIT_AS) what;
};

constexpr auto kLimits = std::to_array<NamedLimit>({{"AS", RLIMIT_AS},
                                                    {"CORE", RLIMIT_CORE},
                                                    {"CPU", RLIMIT_CPU},
                                                    {"DATA", RLIMIT_DATA},
                                                    {"FSIZE", RLIMIT_FSIZE},
                                                    {"MEMLOCK", RLIMIT_MEMLOCK},
                                                    {"NOFILE", RLIMIT_NOFILE},
                                                    {"NPROC", RLIMIT_NPROC},
                                                    {"RSS", RLIMIT_RSS},
                                                    {"STACK", RLIMIT_STACK}});

std::vector<ProcessLimit> Limits() {
  std::vector<ProcessLimit> limits;
  for (const auto& [name, what] : kLimits) {
    rlimit limit{};
    if (::getrlimit(what, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
      const bool hasHard = limit.rlim_max != RLIM_INFINITY;
      limits.push_back({name, limit.rlim_cur, hasHard ? std::optional<std::uint64_t>(limit.rlim_max) : std::nullopt});
    }
  }
  return limits;
}

std::string Locale() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    if (const char* value = std::getenv(name); value != nullptr && *value != '\0') {
      return std::string(name) + "=" + value;
    }
  }
  return {};
}

}  // namespace

Machine LookAtMachine() {
  Machine machine;
  utsname names{};
  if (::uname(&names) == 0) {
    machine.host = names.nodename;
    machine.kernel = std::string(names.sysname) + " " + names.release + " " + names.machine;
  }
  machine.user_id = ::geteuid();
  machine.group_id = ::getegid();
  machine.user = UserName(machine.user_id);
  machine.groups = GroupNames();
  machine.time = Time();
  machine.system = System();
  machine.c_library = std::string("glibc ") + ::gnu_get_libc_version();
  machine.limits = Limits();
  machine.locale = Locale();
  return machine;
}

}  // namespace doctor

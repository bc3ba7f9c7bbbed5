#include "doctor/examine/machine/identity.h"

#include <grp.h>
#include <linux/capability.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace doctor {
namespace {

// They go with the last root number, unless a bit of the process's security settings keeps them.
bool DropCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
  return ::syscall(SYS_capset, &header, none.data()) == 0;
}

// Groups first: without root's rights they could not be changed any more.
bool TakeOn(const passwd& entry) {
  return ::initgroups(entry.pw_name, entry.pw_gid) == 0 && ::setresgid(entry.pw_gid, entry.pw_gid, entry.pw_gid) == 0 &&
         ::setresuid(entry.pw_uid, entry.pw_uid, entry.pw_uid) == 0 && (entry.pw_uid == 0 || DropCapabilities());
}

void SetVariables(const passwd& entry) {
  ::setenv("HOME", entry.pw_dir, 1);
  ::setenv("USER", entry.pw_name, 1);
  ::setenv("LOGNAME", entry.pw_name, 1);
}

}  // namespace

std::string Become(const std::string& user) {
  if (::geteuid() != 0) {
    return "--user is for root";
  }
  const passwd* entry = ::getpwnam(user.c_str());
  if (entry == nullptr) {
    return "there is no user '" + user + "'";
  }
  if (!TakeOn(*entry)) {
    return "the rights of " + user + " cannot be taken on: " + std::strerror(errno);
  }
  SetVariables(*entry);
  // Who has changed its number does not own its folder under /proc any more, unlike a launch.
  ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0);
  return {};
}

}  // namespace doctor

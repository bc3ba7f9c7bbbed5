#include "tests/foundation/system_calls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdarg>
#include <map>
#include <optional>

namespace {

using tests::SystemCall;

struct Fault {
  SystemCall call;
  std::size_t successes;
  int error;
};

std::optional<Fault> fault;
bool failed = false;

std::map<SystemCall, std::vector<std::string>>& Calls() {
  static std::map<SystemCall, std::vector<std::string>> calls;
  return calls;
}

bool Fails(SystemCall call, const char* path) {
  Calls()[call].emplace_back(path);
  if (!fault || fault->call != call) {
    return false;
  }
  if (fault->successes > 0) {
    --fault->successes;
    return false;
  }
  errno = fault->error;
  fault.reset();
  failed = true;
  return true;
}

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int openat(int folder, const char* path, int flags, ...) {
  if (Fails(SystemCall::kOpenat, path)) {
    return -1;
  }
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Next<int(int, const char*, int, ...)>("openat")(folder, path, flags, mode);
}

DIR* fdopendir(int descriptor) {
  return Fails(SystemCall::kFdopendir, "") ? nullptr : Next<DIR*(int)>("fdopendir")(descriptor);
}

dirent* readdir(DIR* folder) {
  return Fails(SystemCall::kReaddir, "") ? nullptr : Next<dirent*(DIR*)>("readdir")(folder);
}

int stat(const char* path, struct stat* status) {
  return Fails(SystemCall::kStat, path) ? -1 : Next<int(const char*, struct stat*)>("stat")(path, status);
}

}  // extern "C"

namespace tests {

FailingCall::FailingCall(SystemCall call, std::size_t successes, int error) {
  failed = false;
  fault = Fault{call, successes, error};
}

FailingCall::~FailingCall() {
  fault.reset();
}

bool FailingCall::HasFailed() const {
  return failed;
}

CountedCalls::CountedCalls(SystemCall call) : call_(call), before_(Calls()[call].size()) {}

std::vector<std::string> CountedCalls::Paths() const {
  const auto& all = Calls()[call_];
  return {all.begin() + static_cast<std::ptrdiff_t>(before_), all.end()};
}

}  // namespace tests

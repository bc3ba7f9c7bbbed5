#include "tests/support/watched_calls.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

namespace tests {

namespace {

// Program and watcher take turns, which costs less on one processor. SECCOMP_IOCTL_NOTIF_SET_FLAGS and
// SECCOMP_USER_NOTIF_FD_SYNC_WAKE_UP, which headers have for a few years only.
constexpr unsigned long kSetFlags = SECCOMP_IOW(4, std::uint64_t);
constexpr std::uint64_t kWakeOnSameProcessor = 1;

enum class About { kNothing, kPath, kDescriptor };

struct CallKind {
  long number;
  const char* name;
  About about;
  std::size_t argument;  // Of the path or the descriptor.
};

constexpr auto kCalls = std::to_array<CallKind>({
    {SYS_access, "access", About::kPath, 0},
    {SYS_brk, "brk", About::kNothing, 0},
    {SYS_clone, "clone", About::kNothing, 0},
    {SYS_clone3, "clone3", About::kNothing, 0},
    {SYS_close, "close", About::kDescriptor, 0},
    {SYS_dup2, "dup2", About::kDescriptor, 0},
    {SYS_dup3, "dup3", About::kDescriptor, 0},
    {SYS_exit_group, "exit_group", About::kNothing, 0},
    {SYS_faccessat, "faccessat", About::kPath, 1},
    {SYS_faccessat2, "faccessat2", About::kPath, 1},
    {SYS_fcntl, "fcntl", About::kDescriptor, 0},
    {SYS_fork, "fork", About::kNothing, 0},
    {SYS_fstat, "fstat", About::kDescriptor, 0},
    {SYS_fstatfs, "fstatfs", About::kDescriptor, 0},
    {SYS_futex, "futex", About::kNothing, 0},
    {SYS_getdents64, "getdents64", About::kDescriptor, 0},
    {SYS_getrandom, "getrandom", About::kNothing, 0},
    {SYS_gettid, "gettid", About::kNothing, 0},
    {SYS_getpid, "getpid", About::kNothing, 0},
    {SYS_getuid, "getuid", About::kNothing, 0},
    {SYS_geteuid, "geteuid", About::kNothing, 0},
    {SYS_lgetxattr, "lgetxattr", About::kPath, 0},
    {SYS_getxattr, "getxattr", About::kPath, 0},
    {SYS_ioctl, "ioctl", About::kDescriptor, 0},
    {SYS_kill, "kill", About::kNothing, 0},
    {SYS_lseek, "lseek", About::kDescriptor, 0},
    {SYS_lstat, "lstat", About::kPath, 0},
    {SYS_madvise, "madvise", About::kNothing, 0},
    {SYS_memfd_create, "memfd_create", About::kNothing, 0},
    {SYS_mkdir, "mkdir", About::kPath, 0},
    {SYS_mmap, "mmap", About::kDescriptor, 4},
    {SYS_mprotect, "mprotect", About::kNothing, 0},
    {SYS_mremap, "mremap", About::kNothing, 0},
    {SYS_munmap, "munmap", About::kNothing, 0},
    {SYS_newfstatat, "newfstatat", About::kPath, 1},
    {SYS_open, "open", About::kPath, 0},
    {SYS_openat, "openat", About::kPath, 1},
    {SYS_pidfd_open, "pidfd_open", About::kNothing, 0},
    {SYS_pipe, "pipe", About::kNothing, 0},
    {SYS_pipe2, "pipe2", About::kNothing, 0},
    {SYS_poll, "poll", About::kNothing, 0},
    {SYS_ppoll, "ppoll", About::kNothing, 0},
    {SYS_prctl, "prctl", About::kNothing, 0},
    {SYS_pread64, "pread64", About::kDescriptor, 0},
    {SYS_prlimit64, "prlimit64", About::kNothing, 0},
    {SYS_read, "read", About::kDescriptor, 0},
    {SYS_readlink, "readlink", About::kPath, 0},
    {SYS_readlinkat, "readlinkat", About::kPath, 1},
    {SYS_rt_sigaction, "rt_sigaction", About::kNothing, 0},
    {SYS_rt_sigprocmask, "rt_sigprocmask", About::kNothing, 0},
    {SYS_setpgid, "setpgid", About::kNothing, 0},
    {SYS_setrlimit, "setrlimit", About::kNothing, 0},
    {SYS_socket, "socket", About::kNothing, 0},
    {SYS_stat, "stat", About::kPath, 0},
    {SYS_statfs, "statfs", About::kPath, 0},
    {SYS_statx, "statx", About::kPath, 1},
    {SYS_sysinfo, "sysinfo", About::kNothing, 0},
    {SYS_tgkill, "tgkill", About::kNothing, 0},
    {SYS_uname, "uname", About::kNothing, 0},
    {SYS_unlink, "unlink", About::kPath, 0},
    {SYS_vfork, "vfork", About::kNothing, 0},
    {SYS_wait4, "wait4", About::kNothing, 0},
    {SYS_waitid, "waitid", About::kNothing, 0},
    {SYS_write, "write", About::kDescriptor, 0},
    {SYS_writev, "writev", About::kDescriptor, 0},
});

const CallKind* KindOf(long number) {
  const auto* const kind = std::ranges::find(kCalls, number, &CallKind::number);
  return kind == kCalls.end() ? nullptr : kind;
}

// What sends the listener and becomes the program comes after the filter is in place, while nobody answers yet.
constexpr auto kFilter = std::to_array<sock_filter>({
    BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
    BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 0, 4),
    BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_sendmsg, 2, 0),
    BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_execve, 1, 0),
    BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
    BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
});

// A message that carries one descriptor.
struct DescriptorMessage {
  DescriptorMessage() {
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = room;
    header.msg_controllen = sizeof room;
  }

  char byte = 0;
  iovec part{&byte, 1};
  alignas(cmsghdr) char room[CMSG_SPACE(sizeof(int))] = {};
  msghdr header{};
};

bool SendDescriptor(int socket, int descriptor) {
  DescriptorMessage message;
  cmsghdr* const control = CMSG_FIRSTHDR(&message.header);
  control->cmsg_level = SOL_SOCKET;
  control->cmsg_type = SCM_RIGHTS;
  control->cmsg_len = CMSG_LEN(sizeof descriptor);
  std::memcpy(CMSG_DATA(control), &descriptor, sizeof descriptor);
  return ::sendmsg(socket, &message.header, 0) == 1;
}

int ReceiveDescriptor(int socket) {
  DescriptorMessage message;
  int descriptor = -1;
  if (::recvmsg(socket, &message.header, MSG_CMSG_CLOEXEC) == 1) {
    if (const cmsghdr* const control = CMSG_FIRSTHDR(&message.header)) {
      std::memcpy(&descriptor, CMSG_DATA(control), sizeof descriptor);
    }
  }
  return descriptor;
}

}  // namespace

WatchedCall::WatchedCall(const seccomp_notif& notification)
    : process_(static_cast<pid_t>(notification.pid)), number_(notification.data.nr) {
  std::ranges::copy(notification.data.args, arguments_.begin());
}

std::string WatchedCall::Name() const {
  const CallKind* const kind = KindOf(number_);
  return kind != nullptr ? kind->name : "";
}

bool WatchedCall::HasPath() const {
  const CallKind* const kind = KindOf(number_);
  return kind != nullptr && kind->about == About::kPath && !TextAt(Argument(kind->argument)).empty();
}

std::string WatchedCall::Path() const {
  const CallKind* const kind = KindOf(number_);
  if (kind == nullptr || kind->about == About::kNothing) {
    return "";
  }
  if (HasPath()) {
    return TextAt(Argument(kind->argument));
  }
  // An empty path stands for the descriptor before it.
  const auto descriptor = static_cast<int>(Argument(kind->about == About::kPath ? 0 : kind->argument));
  std::error_code error;
  return std::filesystem::read_symlink("/proc/" + std::to_string(process_) + "/fd/" + std::to_string(descriptor),
                                       error);
}

std::string WatchedCall::TextAt(std::uint64_t address) const {
  constexpr std::uint64_t kPage = 4096;
  std::string text;
  while (text.find('\0') == std::string::npos && text.size() < 2 * kPage) {
    char page[kPage];
    const std::uint64_t from = address + text.size();
    const iovec here{page, kPage - from % kPage};
    const iovec there{reinterpret_cast<void*>(from), here.iov_len};
    const ssize_t length = ::process_vm_readv(process_, &here, 1, &there, 1, 0);
    if (length <= 0) {
      return "";
    }
    text.append(page, static_cast<std::size_t>(length));
  }
  return text.substr(0, text.find('\0'));
}

seccomp_notif_resp Decision::AnswerTo(std::uint64_t id) const {
  seccomp_notif_resp answer{};
  answer.id = id;
  answer.val = value_;
  answer.error = error_;
  answer.flags = is_made_ ? SECCOMP_USER_NOTIF_FLAG_CONTINUE : 0;
  return answer;
}

Decision ReadAtMost(const WatchedCall& read, std::size_t size) {
  const int process = static_cast<int>(::syscall(SYS_pidfd_open, read.Process(), 0));
  const int file = static_cast<int>(::syscall(SYS_pidfd_getfd, process, read.Argument(0), 0));
  std::vector<char> bytes(std::min<std::size_t>(size, read.Argument(2)));
  const ssize_t length = read.Number() == SYS_read
                             ? ::read(file, bytes.data(), bytes.size())
                             : ::pread(file, bytes.data(), bytes.size(), static_cast<off_t>(read.Argument(3)));
  ::close(file);
  ::close(process);
  if (length > 0) {
    const iovec here{bytes.data(), static_cast<std::size_t>(length)};
    const iovec there{reinterpret_cast<void*>(read.Argument(1)), here.iov_len};
    ::process_vm_writev(read.Process(), &here, 1, &there, 1, 0);
  }
  return Decision::Return(length);
}

bool LetCallsBeWatched(int socket) noexcept {
  const sock_fprog program{kFilter.size(), const_cast<sock_filter*>(kFilter.data())};
  ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  const auto listener =
      static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program));
  return listener >= 0 && SendDescriptor(socket, listener);
}

CallWatch::CallWatch(int socket) : listener_(ReceiveDescriptor(socket)) {
  if (listener_ < 0) {
    throw std::system_error(EPERM, std::generic_category(), "system calls cannot be watched");
  }
  // Kernels before 6.6 do not know it, and work without.
  ::ioctl(listener_, kSetFlags, kWakeOnSameProcessor);
}

CallWatch::~CallWatch() {
  ::close(listener_);
}

void CallWatch::Serve(const CallWatcher& watcher) const {
  seccomp_notif notification{};
  if (::ioctl(listener_, SECCOMP_IOCTL_NOTIF_RECV, &notification) != 0) {
    return;  // The process has ended meanwhile.
  }
  seccomp_notif_resp answer = watcher(WatchedCall(notification)).AnswerTo(notification.id);
  ::ioctl(listener_, SECCOMP_IOCTL_NOTIF_SEND, &answer);
}

}  // namespace tests

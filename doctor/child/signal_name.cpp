#include "doctor/child/signal_name.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <string_view>

namespace doctor {
namespace {

struct Named {
  int signal;
  std::string_view name;
};

// The C library has such a table only from 2.32 on.
constexpr auto kNames = std::to_array<Named>({
    {SIGHUP, "SIGHUP"},       {SIGINT, "SIGINT"},   {SIGQUIT, "SIGQUIT"},   {SIGILL, "SIGILL"},   {SIGTRAP, "SIGTRAP"},
    {SIGABRT, "SIGABRT"},     {SIGBUS, "SIGBUS"},   {SIGFPE, "SIGFPE"},     {SIGKILL, "SIGKILL"}, {SIGUSR1, "SIGUSR1"},
    {SIGSEGV, "SIGSEGV"},     {SIGUSR2, "SIGUSR2"}, {SIGPIPE, "SIGPIPE"},   {SIGALRM, "SIGALRM"}, {SIGTERM, "SIGTERM"},
    {SIGSTKFLT, "SIGSTKFLT"}, {SIGCHLD, "SIGCHLD"}, {SIGCONT, "SIGCONT"},   {SIGSTOP, "SIGSTOP"}, {SIGTSTP, "SIGTSTP"},
    {SIGTTIN, "SIGTTIN"},     {SIGTTOU, "SIGTTOU"}, {SIGURG, "SIGURG"},     {SIGXCPU, "SIGXCPU"}, {SIGXFSZ, "SIGXFSZ"},
    {SIGVTALRM, "SIGVTALRM"}, {SIGPROF, "SIGPROF"}, {SIGWINCH, "SIGWINCH"}, {SIGPOLL, "SIGPOLL"}, {SIGPWR, "SIGPWR"},
    {SIGSYS, "SIGSYS"},
});

}  // namespace

std::string SignalName(int signal) {
  const auto* found = std::ranges::find(kNames, signal, &Named::signal);
  return found != kNames.end() ? std::string(found->name) : "signal " + std::to_string(signal);
}

}  // namespace doctor

// Opens libraries for the target elf_loading, each in a child of its own, which may not survive it. A program of its
// own, since a process under a sanitizer takes long to fork. For each byte that it reads it opens the file that its
// argument names, and writes how that ended: 'l' it loads, 'r' it is refused, 'b' a bus error, 'd' another death.
#include <dlfcn.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

static void Load(const char* path) {
  const struct rlimit none = {0, 0};
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setrlimit(RLIMIT_CORE, &none);
  setrlimit(RLIMIT_FSIZE, &none);
  alarm(10);
  _exit(dlopen(path, RTLD_NOW) ? 'l' : 'r');
}

static char Ask(const char* path) {
  const pid_t child = fork();
  if (child == 0) {
    Load(path);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) {
    return (char)WEXITSTATUS(status);
  }
  return WTERMSIG(status) == SIGBUS ? 'b' : 'd';
}

int main(int argc, char** argv) {
  char question = 0;
  while (argc == 2 && read(STDIN_FILENO, &question, 1) == 1) {
    const char answer = Ask(argv[1]);
    if (write(STDOUT_FILENO, &answer, 1) != 1) {
      return 1;
    }
  }
  return 0;
}

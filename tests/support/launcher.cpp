#include "tests/support/launcher.h"

namespace tests {

std::filesystem::path LauncherFile() { return LAUNCHER_FILE; }

Command Launcher() { return Command(LauncherFile()); }

Command Launcher(const StandInHost& host) { return Launcher().Variables(host.Environment()); }

}  // namespace tests

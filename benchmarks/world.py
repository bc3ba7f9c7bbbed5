"""The product's two fixed folders with what is measured in them, in a private mount namespace."""

import os
import random
import shutil
import sys
from pathlib import Path

from measuring import command

PRODUCT = Path("/opt/morvath/quor")
LAUNCHER = PRODUCT / "bin/grellin_loader"
DOCTOR = PRODUCT / "bin/grellin_doctor"
ASSEMBLY = PRODUCT / "lib64/grellin_utils.dll"
APPHOST = PRODUCT / "lib64/grellin_utils"
SETTINGS = Path("/var/opt/morvath/quor/common/dotnet_settings.ini")
QUIET_ROOT = Path("/opt/morvath/quiet")
CROWDED_ROOT = Path("/opt/morvath/crowded")
SAMPLE_ARGUMENTS = ("return", "0")
# What the launcher sets for the runtime, to be given to others as well.
SAME_VARIABLES = {"DOTNET_EnableDiagnostics": "0", "DOTNET_MULTILEVEL_LOOKUP": "0"}

PRIVATE_ROOT = Path(__file__).resolve().parent.parent / "scripts/private-root"


def can_be_private():
    return os.spawnv(os.P_WAIT, PRIVATE_ROOT, [PRIVATE_ROOT, "true"]) == 0


def enter_private_root():
    """Starts the running script again, with --inside."""
    os.execv(PRIVATE_ROOT, [PRIVATE_ROOT, sys.executable, sys.argv[0], "--inside", *sys.argv[1:]])


def install(build):
    for file in (LAUNCHER, ASSEMBLY, SETTINGS):
        file.parent.mkdir(parents=True)
    shutil.copy(build / "launcher/grellin_loader", LAUNCHER)
    ASSEMBLY.touch()


def write_settings(root, lines=()):
    SETTINGS.write_text("\n".join([f"DotnetRootFolder={root}", *lines]) + "\n")


def add_versions(build, numbers, root=QUIET_ROOT):
    for number in numbers:
        folder = root / f"host/fxr/6.0.{number}"
        folder.mkdir(parents=True)
        shutil.copy(build / "benchmarks/quiet_host/libhostfxr.so", folder)


def remove_versions(numbers):
    for number in numbers:
        shutil.rmtree(QUIET_ROOT / f"host/fxr/6.0.{number}")


def setting_lines(count):
    return [f"Setting{number}=value {number}" for number in range(count)]


def in_any_order(things):
    return random.Random(1).sample(things, len(things))


def minimal_host(build, root, library, **variables):
    return command(build / "benchmarks/minimal_host", library, root, ASSEMBLY, *SAMPLE_ARGUMENTS, **variables)


def quiet_hosts(build):
    """The minimal host and the launcher, on a host library that does nothing."""
    library = QUIET_ROOT / "host/fxr/6.0.36/libhostfxr.so"
    return minimal_host(build, QUIET_ROOT, library), command(LAUNCHER, *SAMPLE_ARGUMENTS)


class RealRuntime:
    """The sample, installed, and a .NET of this machine to run it."""

    def __init__(self, build, prepared):
        self.prepared = prepared
        self.found = dict(line.split("=", 1) for line in (prepared / "prepared").read_text().splitlines())
        self.root = Path(self.found["root"])
        shutil.copytree(self.found["sample"], ASSEMBLY.parent, dirs_exist_ok=True)
        write_settings(self.root)

        library = self.root / "host/fxr" / self.found["host"] / "libhostfxr.so"
        self.launcher = command(LAUNCHER, *SAMPLE_ARGUMENTS)
        self.minimal = minimal_host(build, self.root, library)
        self.same_minimal = minimal_host(build, self.root, library, **SAME_VARIABLES)

    def official(self, **variables):
        """The official ways to start the sample, those of them that are there."""
        ways = {"apphost": (self._apphost(), *SAMPLE_ARGUMENTS),
                "dotnet": (self.dotnet_command(), ASSEMBLY, *SAMPLE_ARGUMENTS)}
        return {name: command(*arguments, DOTNET_ROOT=str(self.root), **variables)
                for name, arguments in ways.items() if Path(arguments[0]).exists()}

    def dotnet_command(self):
        return Path(self.found["dotnet"]) / "dotnet"

    def doctor(self, build, *arguments):
        shutil.copy(build / "doctor/grellin_doctor", DOCTOR)
        return command(DOCTOR, *arguments)

    def crowded(self, build, versions):
        """The same .NET with older versions beside it, as many in all."""
        for entry in self.root.iterdir():
            if entry.name != "host":
                CROWDED_ROOT.mkdir(exist_ok=True)
                (CROWDED_ROOT / entry.name).symlink_to(entry.resolve())
        fxr = CROWDED_ROOT / "host/fxr"
        shutil.copytree(self.root / "host/fxr" / self.found["host"], fxr / f"6.0.{versions}")
        add_versions(build, range(1, versions), CROWDED_ROOT)
        return CROWDED_ROOT

    def _apphost(self):
        built = self.prepared / "apphost"
        if built.exists():
            shutil.copy(built, APPHOST)
        return APPHOST

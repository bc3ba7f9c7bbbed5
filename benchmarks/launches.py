#!/usr/bin/env python3
"""Measures whole launches of a release build and prints them as a table.

    launches.py [--quick] [--dotnet FOLDER] BUILD             all that can be measured here
    launches.py --check [--memory [--dotnet FOLDER]] BUILD    what has a ceiling: instructions, with --memory the peak
                                                              memory too; ends with 1 when one is exceeded

BUILD is the build folder, FOLDER what scripts/prepare-sample made ready, with an `apphost` for the sample in it where
there is one. Runs itself in a private mount namespace, where the product's fixed folders are its own.
"""

import argparse
import os
import random
import shutil
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # Nothing is left in the source folder.
import measuring
from measuring import Row, command, ratio

PRODUCT = Path("/opt/morvath/quor")
LAUNCHER = PRODUCT / "bin/grellin_loader"
ASSEMBLY = PRODUCT / "lib64/grellin_utils.dll"
APPHOST = PRODUCT / "lib64/grellin_utils"
SETTINGS = Path("/var/opt/morvath/quor/common/dotnet_settings.ini")
QUIET_ROOT = Path("/opt/morvath/quiet")
SAMPLE_ARGUMENTS = ("return", "0")
# What the launcher sets for the runtime, to be given to others as well.
SAME_VARIABLES = {"DOTNET_EnableDiagnostics": "0", "DOTNET_MULTILEVEL_LOOKUP": "0"}

FEW, MANY = 3, 500  # Version folders.
LINES = 1000


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--memory", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--dotnet", type=Path)
    parser.add_argument("build", type=Path)
    options = parser.parse_args()
    if not options.inside:
        enter_private_root(options.check)
    install(options.build)
    rows = list(rows_of(options))
    measuring.print_table(rows, with_ceilings=options.check)
    if options.check and not all(row.held for row in rows):
        sys.exit("A figure is above its ceiling.")


def skip(reason):
    print("Skipped:", reason)
    sys.exit(0)


def enter_private_root(checking):
    private_root = Path(__file__).resolve().parent.parent / "scripts/private-root"
    if checking and shutil.which("valgrind") is None:
        skip("valgrind is not installed")
    if checking and os.spawnv(os.P_WAIT, private_root, [private_root, "true"]) != 0:
        skip("no private mount namespace can be made, see above")
    os.execv(private_root, [private_root, sys.executable, __file__, "--inside", *sys.argv[1:]])


# The world.


def install(build):
    for file in (LAUNCHER, ASSEMBLY, SETTINGS):
        file.parent.mkdir(parents=True)
    shutil.copy(build / "launcher/grellin_loader", LAUNCHER)
    ASSEMBLY.touch()


def write_settings(root, lines=()):
    SETTINGS.write_text("\n".join([f"DotnetRootFolder={root}", *lines]) + "\n")


def add_versions(build, numbers):
    for number in numbers:
        folder = QUIET_ROOT / f"host/fxr/6.0.{number}"
        folder.mkdir(parents=True)
        shutil.copy(build / "benchmarks/quiet_host/libhostfxr.so", folder)


def setting_lines():
    return [f"Setting{number}=value {number}" for number in range(LINES)]


def in_any_order(things):
    return random.Random(1).sample(things, len(things))


def minimal_host(build, root, library, **variables):
    return command(build / "benchmarks/minimal_host", library, root, ASSEMBLY, *SAMPLE_ARGUMENTS, **variables)


# The rows.


def rows_of(options):
    yield from instruction_rows(options)
    if options.memory or not options.check:
        yield from quiet_memory_rows(options)
        if options.dotnet:
            real = RealRuntime(options)
            yield from real.memory_rows()
            if not options.check:
                yield from real.time_rows()


def quiet_hosts(build):
    library = QUIET_ROOT / "host/fxr/6.0.36/libhostfxr.so"
    return minimal_host(build, QUIET_ROOT, library), command(LAUNCHER, *SAMPLE_ARGUMENTS)


def instruction_rows(options):
    add_versions(options.build, (1, 20, 36))
    write_settings(QUIET_ROOT)
    minimal, launcher = quiet_hosts(options.build)
    few = measuring.instructions(launcher)
    yield ratio(f"Instructions, {FEW} versions, to the minimal host's", measuring.instructions(minimal), few, 1.10)

    def further_lines(what, lines, ceiling=None):
        write_settings(QUIET_ROOT, lines)
        total = measuring.instructions(launcher)
        write_settings(QUIET_ROOT)
        return Row(what, few, total, (total - few) / LINES, ceiling)

    yield further_lines(f"Instructions per further settings line, {LINES:,} in order", setting_lines(), 2000)
    if not options.check:
        yield further_lines("... in any order", in_any_order(setting_lines()))

    further = range(100, 100 + MANY - FEW)
    add_versions(options.build, in_any_order(further))
    many = measuring.instructions(launcher)
    yield Row(f"Instructions per further version folder, {MANY} in all", few, many, (many - few) / (MANY - FEW), 8000)
    for number in further:
        shutil.rmtree(QUIET_ROOT / f"host/fxr/6.0.{number}")


def quiet_memory_rows(options):
    minimal, launcher = quiet_hosts(options.build)
    peak = measuring.peak_memories({"minimal": minimal, "launcher": launcher}, 11 if options.quick else 101)
    yield ratio("Peak memory in KiB, a host that does nothing, to the minimal host's", peak["minimal"],
                peak["launcher"], 1.02)


class RealRuntime:
    """The sample, installed, and a .NET of this machine to run it."""

    def __init__(self, options):
        self.options = options
        self.found = dict(line.split("=", 1) for line in (options.dotnet / "prepared").read_text().splitlines())
        self.root = Path(self.found["root"])
        shutil.copytree(self.found["sample"], ASSEMBLY.parent, dirs_exist_ok=True)
        write_settings(self.root)

        library = self.root / "host/fxr" / self.found["host"] / "libhostfxr.so"
        self.launcher = command(LAUNCHER, *SAMPLE_ARGUMENTS)
        self.minimal = minimal_host(options.build, self.root, library)
        self.same_minimal = minimal_host(options.build, self.root, library, **SAME_VARIABLES)

    def memory_rows(self):
        peak = measuring.peak_memories({"minimal": self.minimal, "same": self.same_minimal, "launcher": self.launcher},
                                       5 if self.options.quick else 31)
        yield ratio("Peak memory in KiB, the sample on .NET, to the minimal host's", peak["minimal"], peak["launcher"],
                    1.02)
        if not self.options.check:
            yield ratio("... given the launcher's variables", peak["same"], peak["launcher"])

    def time_rows(self):
        official = {"apphost": self.apphost(), "dotnet": self.dotnet()}
        commands = {"launcher": self.launcher, "minimal": self.same_minimal}
        for name, arguments in official.items():
            if Path(arguments[0]).exists():
                root = {"DOTNET_ROOT": str(self.root)}
                commands |= {name: command(*arguments, **root),
                             f"same {name}": command(*arguments, **root, **SAME_VARIABLES)}
        spent = measuring.wall_times(commands, 10 if self.options.quick else 60)

        for name, label in (("apphost", "the official apphost's"), ("dotnet", "the `dotnet` command's")):
            if name in spent:
                yield ratio(f"Wall time in ms, the sample on .NET, to {label}", spent[name], spent["launcher"])
                yield ratio("... given the launcher's variables", spent[f"same {name}"], spent["launcher"])
            else:
                yield Row(f"Wall time in ms, the sample on .NET, to {label}: not measured, the program is missing")
        yield ratio("... to a minimal host's, given the launcher's variables", spent["minimal"], spent["launcher"])

    def apphost(self):
        built = self.options.dotnet / "apphost"
        if built.exists():
            shutil.copy(built, APPHOST)
        return APPHOST, *SAMPLE_ARGUMENTS

    def dotnet(self):
        return Path(self.found["dotnet"]) / "dotnet", ASSEMBLY, *SAMPLE_ARGUMENTS


if __name__ == "__main__":
    main()

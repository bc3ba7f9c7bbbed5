#!/usr/bin/env python3
"""Measures whole launches of a release build and prints them as a table.

    launches.py [--quick] [--dotnet FOLDER] BUILD    all that can be measured here
    launches.py --check BUILD                        the goals that are counts of instructions; 1 when one is missed

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
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--dotnet", type=Path)
    parser.add_argument("build", type=Path)
    options = parser.parse_args()
    if not options.inside:
        enter_private_root(options.check)
    install(options.build)
    if options.check:
        check(options.build)
    else:
        report(options)


def skip(reason):
    print("Skipped:", reason)
    sys.exit(0)


def enter_private_root(checking):
    private_root = Path(__file__).resolve().parent.parent / "scripts/private-root"
    if checking and shutil.which("valgrind") is None:
        skip("there is no valgrind")
    if checking and os.spawnv(os.P_WAIT, private_root, [private_root, "true"]) != 0:
        skip("there is no private mount namespace, see above")
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


def minimal_host(build, root, library, linked="", **variables):
    return command(build / f"benchmarks/minimal_host{linked}", library, root, ASSEMBLY, *SAMPLE_ARGUMENTS, **variables)


# The rows.


def check(build):
    rows = list(instruction_rows(build))
    measuring.print_table(rows)
    sys.exit(0 if all(row.met for row in rows) else 1)


def report(options):
    rows = list(instruction_rows(options.build, everything=True))
    rows += quiet_memory_rows(options)
    if options.dotnet:
        rows += real_rows(options)
    measuring.print_table(rows)
    if has_cpp_library_inside():
        print("The launcher has the C++ library inside, the minimal host uses the shared one where no row says else.")


def has_cpp_library_inside():
    return b"libstdc++.so" not in LAUNCHER.read_bytes()


def quiet_hosts(build):
    library = QUIET_ROOT / "host/fxr/6.0.36/libhostfxr.so"
    return (minimal_host(build, QUIET_ROOT, library), minimal_host(build, QUIET_ROOT, library, "_static"),
            command(LAUNCHER, *SAMPLE_ARGUMENTS))


def instruction_rows(build, everything=False):
    add_versions(build, (1, 20, 36))
    write_settings(QUIET_ROOT)
    minimal, minimal_static, launcher = quiet_hosts(build)
    few = measuring.instructions(launcher)
    yield ratio(f"Instructions, {FEW} versions, to the minimal host's", measuring.instructions(minimal), few, 1.10)
    if everything and has_cpp_library_inside():
        static = measuring.instructions(minimal_static)
        yield ratio("... to those of a minimal host with the C++ library inside", static, few)

    def further_lines(what, lines):
        write_settings(QUIET_ROOT, lines)
        total = measuring.instructions(launcher)
        write_settings(QUIET_ROOT)
        return Row(what, few, total, (total - few) / LINES, 2000)

    yield further_lines(f"Instructions per further settings line, {LINES:,} in order", setting_lines())
    if everything:
        yield further_lines("... in any order", in_any_order(setting_lines()))

    add_versions(build, in_any_order(range(100, 100 + MANY - FEW)))
    many = measuring.instructions(launcher)
    yield Row(f"Instructions per further version folder, {MANY} in all", few, many, (many - few) / (MANY - FEW), 8000)
    for number in range(100, 100 + MANY - FEW):
        shutil.rmtree(QUIET_ROOT / f"host/fxr/6.0.{number}")


def quiet_memory_rows(options):
    names = ("minimal", "minimal_static", "launcher")
    commands = dict(zip(names, quiet_hosts(options.build)))
    peak = measuring.peak_memories(commands, 11 if options.quick else 101)
    yield ratio("Peak memory in KiB, a host that does nothing, to the minimal host's", peak["minimal"], peak["launcher"],
                1.02)
    if has_cpp_library_inside():
        yield ratio("... to that of a minimal host with the C++ library inside", peak["minimal_static"],
                    peak["launcher"])


def real_rows(options):
    found = dict(line.split("=", 1) for line in (options.dotnet / "prepared").read_text().splitlines())
    root = Path(found["root"])
    library = root / "host/fxr" / found["host"] / "libhostfxr.so"
    shutil.copytree(found["sample"], ASSEMBLY.parent, dirs_exist_ok=True)
    write_settings(root)
    launcher = command(LAUNCHER, *SAMPLE_ARGUMENTS)
    minimal = minimal_host(options.build, root, library)
    same_minimal = minimal_host(options.build, root, library, **SAME_VARIABLES)

    peak = measuring.peak_memories({"minimal": minimal, "same": same_minimal, "launcher": launcher},
                                   5 if options.quick else 31)
    yield ratio("Peak memory in KiB, the sample on .NET, to the minimal host's", peak["minimal"], peak["launcher"],
                1.02)
    yield ratio("... given the launcher's variables", peak["same"], peak["launcher"])

    commands = {"launcher": launcher, "minimal": same_minimal}
    dotnet = (Path(found["dotnet"]) / "dotnet", ASSEMBLY, *SAMPLE_ARGUMENTS)
    if dotnet[0].exists():
        commands |= {"dotnet": command(*dotnet), "same dotnet": command(*dotnet, **SAME_VARIABLES)}
    if (options.dotnet / "apphost").exists():
        shutil.copy(options.dotnet / "apphost", APPHOST)
        apphost = (APPHOST, *SAMPLE_ARGUMENTS)
        commands |= {"apphost": command(*apphost, DOTNET_ROOT=str(root)),
                     "same apphost": command(*apphost, DOTNET_ROOT=str(root), **SAME_VARIABLES)}
    spent = measuring.wall_times(commands, 10 if options.quick else 60)

    def times(name, label, goal):
        if name not in spent:
            return [Row(f"{label}: left out, there is no such program here")]
        return [ratio(label, spent[name], spent["launcher"], goal),
                ratio("... given the launcher's variables", spent[f"same {name}"], spent["launcher"])]

    yield from times("apphost", "Wall time in ms, the sample on .NET, to the official apphost's", 0.95)
    yield from times("dotnet", "Wall time in ms, the sample on .NET, to the `dotnet` command's", 1.00)
    yield ratio("... to a minimal host's, given the launcher's variables", spent["minimal"], spent["launcher"])


if __name__ == "__main__":
    main()

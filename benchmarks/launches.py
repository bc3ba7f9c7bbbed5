#!/usr/bin/env python3
"""Measures whole launches of a release build and prints them as a table.

    launches.py [--quick] [--dotnet FOLDER] BUILD             all that can be measured here
    launches.py --check [--memory [--dotnet FOLDER]] BUILD    what has a ceiling: instructions, with --memory the peak
                                                              memory too; ends with 1 when one is exceeded

BUILD is the build folder, FOLDER what scripts/prepare-sample made ready, with an `apphost` for the sample in it where
there is one. Runs itself in a private mount namespace, where the product's fixed folders are its own.
"""

import argparse
import shutil
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # Nothing is left in the source folder.
import measuring
import world
from tables import Row, print_table, ratio

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
        if options.check:
            skip_where_not_possible()
        world.enter_private_root()
    world.install(options.build)
    rows = list(rows_of(options))
    print_table(rows, with_ceilings=options.check)
    if options.check and not all(row.held for row in rows):
        sys.exit("A figure is above its ceiling.")


def skip(reason):
    print("Skipped:", reason)
    sys.exit(0)


def skip_where_not_possible():
    if shutil.which("valgrind") is None:
        skip("valgrind is not installed")
    if not world.can_be_private():
        skip("no private mount namespace can be made, see above")


def rows_of(options):
    yield from instruction_rows(options)
    if options.memory or not options.check:
        yield from quiet_memory_rows(options)
        if options.dotnet:
            real = world.RealRuntime(options.build, options.dotnet)
            yield from real_memory_rows(real, options)
            if not options.check:
                yield from real_time_rows(real, options)
                yield from doctor_time_rows(real, options)


def instruction_rows(options):
    world.add_versions(options.build, (1, 20, 36))
    world.write_settings(world.QUIET_ROOT)
    minimal, launcher = world.quiet_hosts(options.build)
    few = measuring.instructions(launcher)
    yield ratio(f"Instructions, {FEW} versions, to the minimal host's", measuring.instructions(minimal), few, 1.10)

    def further_lines(what, lines, ceiling=None):
        world.write_settings(world.QUIET_ROOT, lines)
        total = measuring.instructions(launcher)
        world.write_settings(world.QUIET_ROOT)
        return Row(what, few, total, (total - few) / LINES, ceiling)

    lines = world.setting_lines(LINES)
    yield further_lines(f"Instructions per further settings line, {LINES:,} in order", lines, 2000)
    if not options.check:
        yield further_lines("... in any order", world.in_any_order(lines))

    further = range(100, 100 + MANY - FEW)
    world.add_versions(options.build, world.in_any_order(further))
    many = measuring.instructions(launcher)
    yield Row(f"Instructions per further version folder, {MANY} in all", few, many, (many - few) / (MANY - FEW), 8000)
    world.remove_versions(further)


def quiet_memory_rows(options):
    minimal, launcher = world.quiet_hosts(options.build)
    peak = measuring.peak_memories({"minimal": minimal, "launcher": launcher}, 11 if options.quick else 101)
    yield ratio("Peak memory in KiB, a host that does nothing, to the minimal host's", peak["minimal"],
                peak["launcher"], 1.02)


def real_memory_rows(real, options):
    peak = measuring.peak_memories({"minimal": real.minimal, "same": real.same_minimal, "launcher": real.launcher},
                                   5 if options.quick else 31)
    yield ratio("Peak memory in KiB, the sample on .NET, to the minimal host's", peak["minimal"], peak["launcher"],
                1.02)
    if not options.check:
        yield ratio("... given the launcher's variables", peak["same"], peak["launcher"])


def real_time_rows(real, options):
    commands = {"launcher": real.launcher, "minimal": real.same_minimal, **real.official()}
    commands |= {f"same {name}": same for name, same in real.official(**world.SAME_VARIABLES).items()}
    spent = measuring.medians(measuring.wall_times(commands, 10 if options.quick else 60))

    for name, label in (("apphost", "the official apphost's"), ("dotnet", "the `dotnet` command's")):
        if name in spent:
            yield ratio(f"Wall time in ms, the sample on .NET, to {label}", spent[name], spent["launcher"])
            yield ratio("... given the launcher's variables", spent[f"same {name}"], spent["launcher"])
        else:
            yield Row(f"Wall time in ms, the sample on .NET, to {label}: not measured, the program is missing")
    yield ratio("... to a minimal host's, given the launcher's variables", spent["minimal"], spent["launcher"])


def doctor_time_rows(real, options):
    """What an operator waits for: at most half a second for a sound product, at most one with many versions."""
    crowded = real.crowded(options.build, MANY)
    commands = {"sound": real.doctor(options.build), "crowded": real.doctor(options.build, "--root", crowded)}
    spent = measuring.medians(measuring.wall_times(commands, 5 if options.quick else 20))
    yield Row("Wall time in ms, the doctor, the sample on .NET", figure=spent["sound"])
    yield Row(f"... with {MANY} version folders", figure=spent["crowded"])


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Measures a release build's launches beside those of the official ways to start an application.

    side_by_side.py [--quick] [--pictures FOLDER] --dotnet FOLDER BUILD

Prints three tables: what each way costs on a host that does nothing, what the sample costs on a real .NET, and how the
costs grow. With --pictures it draws them too, which takes python3-matplotlib. BUILD is the build folder, --dotnet what
scripts/prepare-sample made ready, with an `apphost` in it. Runs itself in a private mount namespace.
"""

import argparse
import shutil
import statistics
import sys
from pathlib import Path

sys.dont_write_bytecode = True  # Nothing is left in the source folder.
import measuring
import world
from measuring import command
from tables import print_markdown, text_of

NAMES = {"launcher": "the launcher", "minimal": "minimal host", "apphost": "apphost", "dotnet": "`dotnet`"}
VERSION_COUNTS = (1, 10, 100, 1000, 10000)
LINE_COUNTS = (10, 100, 1000, 10000, 100000, 1000000)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--pictures", type=Path)
    parser.add_argument("--dotnet", type=Path, required=True)
    parser.add_argument("build", type=Path)
    options = parser.parse_args()
    if not options.inside:
        world.enter_private_root()
    world.install(options.build)
    real = world.RealRuntime(options.build, options.dotnet)

    starts = compare_on_dotnet(real, options.quick)
    compare_on_quiet_host(real, options)
    versions = growth_with_versions(real, options)
    lines = growth_with_lines(options)
    if options.pictures:
        import pictures
        pictures.draw_starts(options.pictures, starts)
        pictures.draw_versions(options.pictures, versions)
        pictures.draw_lines(options.pictures, lines)


def texts(figures):
    return {name: text_of(figure) for name, figure in figures.items()}


def figure_rows(commands, rounds):
    """The figures that do not depend on what else the machine does, or little."""
    yield "peak memory, KiB", texts(measuring.peak_memories(commands, rounds))
    yield "page faults", texts(measuring.page_faults(commands, rounds))
    traced = {name: measuring.system_calls(each) for name, each in commands.items()}
    if all(traced.values()):
        yield "system calls", texts({name: calls for name, (calls, _) in traced.items()})
        yield "bytes read", texts({name: read for name, (_, read) in traced.items()})
    else:
        print("System calls and bytes read are left out: there is no strace, or it may not trace.")


def with_spread(times):
    return {name: f"{statistics.median(taken):.2f} ± {measuring.spread(taken):.2f}" for name, taken in times.items()}


def print_comparison(title, names, rows):
    print()
    print_markdown([title, *(NAMES[name] for name in names)],
                   [[what, *(cells[name] for name in names)] for what, cells in rows])


def compare_on_dotnet(real, quick):
    commands = {"launcher": real.launcher, "minimal": real.minimal, **real.official()}
    warm = measuring.wall_times(commands, 10 if quick else 60)
    rows = [("wall time, ms", with_spread(warm))]
    if measuring.may_drop_caches():
        cold = measuring.cold_times(commands, 3 if quick else 15)
        rows.append(("wall time with nothing in memory, ms", with_spread(cold)))
    else:
        print("Times with nothing in memory are left out: the page cache may not be dropped.")
    rows += figure_rows(commands, 3 if quick else 15)
    print_comparison("The sample on .NET", commands, rows)
    return warm


def quiet_commands(real, options):
    """All ways to start, on a host that does nothing. The official two find it in their own ways."""
    minimal, launcher = world.quiet_hosts(options.build)
    commands = {"launcher": launcher, "minimal": minimal}
    if world.APPHOST.exists():
        commands["apphost"] = command(world.APPHOST, *world.SAMPLE_ARGUMENTS, DOTNET_ROOT=str(world.QUIET_ROOT))
    if real.dotnet_command().exists():
        shutil.copy(real.dotnet_command(), world.QUIET_ROOT)
        commands["dotnet"] = command(world.QUIET_ROOT / "dotnet", world.ASSEMBLY, *world.SAMPLE_ARGUMENTS)
    return commands


def compare_on_quiet_host(real, options):
    world.write_settings(world.QUIET_ROOT)
    world.add_versions(options.build, (1, 20, 36))
    commands = quiet_commands(real, options)
    rows = [("instructions", texts({name: measuring.instructions(each) for name, each in commands.items()})),
            ("wall time, ms", with_spread(measuring.wall_times(commands, 20 if options.quick else 200))),
            *figure_rows(commands, 3 if options.quick else 31)]
    print_comparison("A host that does nothing, 3 versions", commands, rows)
    world.remove_versions((1, 20))


def growth_with_versions(real, options):
    """Instructions by the number of version folders, for each way that looks for a version."""
    commands = {name: each for name, each in quiet_commands(real, options).items() if name != "minimal"}
    counts = VERSION_COUNTS[:3] if options.quick else VERSION_COUNTS
    growth = {name: [] for name in commands}
    there = 1
    for count in counts:
        world.add_versions(options.build, world.in_any_order(range(100 + there, 100 + count)))
        there = count
        for name, each in commands.items():
            growth[name].append(measuring.instructions(each))
    world.remove_versions(range(101, 100 + there))
    print_comparison("Instructions by version folders", commands,
                     [(f"{count:,}", {name: text_of(growth[name][row]) for name in commands})
                      for row, count in enumerate(counts)])
    return counts, growth


def growth_with_lines(options):
    """Wall time and peak memory of the launcher by the number of settings lines."""
    _, launcher = world.quiet_hosts(options.build)
    counts = LINE_COUNTS[:3] if options.quick else LINE_COUNTS
    times, memory = [], []
    for count in counts:
        world.write_settings(world.QUIET_ROOT, world.setting_lines(count))
        one = {"launcher": launcher}
        times.append(measuring.wall_times(one, 5)["launcher"])
        memory.append(measuring.peak_memories(one, 3)["launcher"])
    print()
    print_markdown(["Settings lines", "wall time, ms", "peak memory, KiB"],
                   [[f"{count:,}", with_spread({"": taken})[""], text_of(peak)]
                    for count, taken, peak in zip(counts, times, memory)])
    return counts, [statistics.median(taken) for taken in times], memory


if __name__ == "__main__":
    main()

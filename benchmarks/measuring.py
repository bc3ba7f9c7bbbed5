"""How the figures are taken, and how a table of them looks."""

import contextlib
import os
import re
import statistics
import subprocess
import time
from dataclasses import dataclass

# The same for every program that is compared. Where a row gives one of them more variables, its name says so.
ENVIRONMENT = {"PATH": os.environ["PATH"], "HOME": os.environ.get("HOME", "/root"), "LC_ALL": "C.UTF-8"}


@dataclass
class Command:
    arguments: list
    variables: dict

    def environment(self):
        return ENVIRONMENT | self.variables


def command(*arguments, **variables):
    return Command([str(argument) for argument in arguments], variables)


def _run(arguments, environment):
    """Standard error of a program that must succeed."""
    done = subprocess.run(arguments, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(arguments)} ended with {done.returncode}: {done.stderr}")
    return done.stderr


def instructions(measured):
    """User instructions from the first one of the dynamic loader to the last one of the process."""
    valgrind = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    report = _run(valgrind + measured.arguments, measured.environment())
    return int(re.search(r"Collected : (\d+)", report).group(1))


def peak_memories(commands, rounds):
    """The median of each program's maximum resident set in KiB. They take turns."""
    # A small program starts the measured one: what a process had before exec counts as its own.
    def peak(each):
        report = _run(["/usr/bin/time", "--format=%M"] + each.arguments, each.environment())
        return int(report.split()[-1])
    return _medians(peak, commands, rounds)


def wall_times(commands, rounds):
    """The median of each program's time in milliseconds, after two rounds to warm up. They take turns, at real-time
    priority where that is allowed, so that what else the machine does disturbs them less."""
    def milliseconds(each):
        start = time.perf_counter()
        process = os.posix_spawn(each.arguments[0], each.arguments, each.environment(),
                                 file_actions=[(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
        status = os.waitpid(process, 0)[1]
        spent = time.perf_counter() - start
        if status != 0:
            raise SystemExit(f"{' '.join(each.arguments)} ended with wait status {status}")
        return spent * 1000
    with _real_time():
        _medians(milliseconds, commands, 2)
        return _medians(milliseconds, commands, rounds)


@contextlib.contextmanager
def _real_time():
    with contextlib.suppress(OSError):
        os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
    yield
    with contextlib.suppress(OSError):
        os.sched_setscheduler(0, os.SCHED_OTHER, os.sched_param(0))


def _medians(measure, commands, rounds):
    figures = {name: [] for name in commands}
    names = list(commands)
    for _ in range(rounds):
        for name in names:
            figures[name].append(measure(commands[name]))
        names.append(names.pop(0))  # Nobody always follows the same one.
    return {name: statistics.median(taken) for name, taken in figures.items()}


@dataclass
class Row:
    what: str
    other: object = None  # What the launcher is compared with, when it is.
    ours: object = None
    figure: object = None
    ceiling: object = None  # The most that the figure may be; None where it is only for comparison.

    @property
    def held(self):
        return self.ceiling is None or self.figure <= self.ceiling


def ratio(what, other, ours, ceiling=None):
    return Row(what, other, ours, ours / other, ceiling)


def _text(value):
    if value is None:
        return ""
    if isinstance(value, str):
        return value
    return f"{value:,.0f}" if value >= 100 else f"{value:.2f}" if value >= 10 else f"{value:.3f}"


def _ceiling_cells(row):
    if row.ceiling is None:
        return ["", ""]
    return [_text(row.ceiling), "yes" if row.held else "NO"]


def print_table(rows, with_ceilings):
    """As Markdown, so that it can be quoted."""
    titles = ["What", "Compared with", "The launcher", "Figure"] + ["Ceiling", "Held"] * with_ceilings
    lines = [titles, ["---"] + ["---:"] * (len(titles) - 1)]
    for row in rows:
        cells = [row.what, _text(row.other), _text(row.ours), _text(row.figure)]
        lines.append(cells + _ceiling_cells(row) * with_ceilings)
    widths = [max(len(line[column]) for line in lines) for column in range(len(titles))]
    for what, *cells in lines:
        padded = [what.ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(cells, widths[1:])]
        print("| " + " | ".join(padded) + " |")

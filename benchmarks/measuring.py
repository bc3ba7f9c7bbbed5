"""How the figures are taken."""

import contextlib
import os
import re
import statistics
import subprocess
import tempfile
import time
from dataclasses import dataclass
from pathlib import Path

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


def _resource(letter):
    """What measures a figure of GNU time. That small program starts the measured one: what a process had before exec
    counts as its own."""
    def measure(each):
        report = _run(["/usr/bin/time", f"--format=%{letter}"] + each.arguments, each.environment())
        return int(report.split()[-1])
    return measure


def peak_memories(commands, rounds):
    """The median of each program's maximum resident set in KiB. They take turns."""
    return medians(_taken_in_turns(_resource("M"), commands, rounds))


def page_faults(commands, rounds):
    """The median of each program's page faults that read nothing from a disk."""
    return medians(_taken_in_turns(_resource("R"), commands, rounds))


def system_calls(measured):
    """How many system calls a program and its threads make, and how many bytes they read with them; files that are
    mapped into memory are not read so. None without strace, or where tracing is not permitted."""
    with tempfile.NamedTemporaryFile("r", errors="replace") as trace:
        try:
            _run(["strace", "-f", "-qq", "-s", "0", "-o", trace.name] + measured.arguments, measured.environment())
        except (FileNotFoundError, SystemExit):
            return None
        lines = [line for line in trace if " resumed>" not in line and "(" in line]
        trace.seek(0)
        reads = re.findall(r"(?:read|pread64|readv)(?:\(| resumed).*= (\d+)$", trace.read(), re.MULTILINE)
    return len(lines), sum(map(int, reads))


def may_drop_caches():
    return os.access("/proc/sys/vm/drop_caches", os.W_OK)


def cold_times(commands, rounds):
    """Each program's times in milliseconds when nothing of any file is in memory. They take turns."""
    def cold(each):
        os.sync()
        Path("/proc/sys/vm/drop_caches").write_text("3")
        return _milliseconds(each)
    return _taken_in_turns(cold, commands, rounds)


def wall_times(commands, rounds):
    """Each program's times in milliseconds, after two rounds to warm up. They take turns, at real-time priority where
    that is allowed, so that what else the machine does disturbs them less."""
    with _real_time():
        _taken_in_turns(_milliseconds, commands, 2)
        return _taken_in_turns(_milliseconds, commands, rounds)


def _milliseconds(each):
    start = time.perf_counter()
    process = os.posix_spawn(each.arguments[0], each.arguments, each.environment(),
                             file_actions=[(os.POSIX_SPAWN_OPEN, 1, "/dev/null", os.O_WRONLY, 0)])
    status = os.waitpid(process, 0)[1]
    spent = time.perf_counter() - start
    if status != 0:
        raise SystemExit(f"{' '.join(each.arguments)} ended with wait status {status}")
    return spent * 1000


@contextlib.contextmanager
def _real_time():
    with contextlib.suppress(OSError):
        os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
    yield
    with contextlib.suppress(OSError):
        os.sched_setscheduler(0, os.SCHED_OTHER, os.sched_param(0))


def _taken_in_turns(measure, commands, rounds):
    figures = {name: [] for name in commands}
    names = list(commands)
    for _ in range(rounds):
        for name in names:
            figures[name].append(measure(commands[name]))
        names.append(names.pop(0))  # Nobody always follows the same one.
    return figures


def medians(figures):
    return {name: statistics.median(taken) for name, taken in figures.items()}


def spread(taken):
    """Half the distance between the quartiles: every second measurement is at most about this far from the median."""
    first, _, third = statistics.quantiles(taken, n=4)
    return (third - first) / 2

"""Draws what was measured, as SVG for light and for dark pages."""

import statistics

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plot
from matplotlib.ticker import FuncFormatter, NullFormatter

import measuring

# Text stays text, and the same figures give the same file.
matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "grellin", "font.size": 10,
                            "axes.spines.top": False, "axes.spines.right": False})

THEMES = {"light": {"ink": "#1f2328", "ours": "#0969da", "theirs": "#8c959f"},
          "dark": {"ink": "#e6edf3", "ours": "#58a6ff", "theirs": "#6e7681"}}
NAMES = {"launcher": "grellin_loader", "minimal": "minimal host", "apphost": "apphost", "dotnet": "dotnet"}
MARKS = {"launcher": "o", "apphost": "s", "dotnet": "^"}


def _draw(folder, name, size, fill):
    folder.mkdir(parents=True, exist_ok=True)
    for theme, colors in THEMES.items():
        ink = {key: colors["ink"] for key in ("text.color", "axes.labelcolor", "axes.edgecolor", "xtick.color",
                                              "ytick.color")}
        with matplotlib.rc_context(ink):
            figure, axes = plot.subplots(figsize=size)
            fill(figure, axes, colors)
            figure.savefig(folder / f"{name}-{theme}.svg", transparent=True, bbox_inches="tight",
                           metadata={"Date": None})
            plot.close(figure)


def _color(name, colors):
    return colors["ours" if name == "launcher" else "theirs"]


# 10,000 in place of ten to the fourth.
def _plain(*axes):
    for axis in axes:
        axis.set_major_formatter(FuncFormatter(lambda value, _: f"{value:,g}"))
        axis.set_minor_formatter(NullFormatter())


def draw_starts(folder, times):
    """Bars of the medians, with the spread."""
    def fill(_, axes, colors):
        names = list(times)
        middle = [statistics.median(times[name]) for name in names]
        spread = [measuring.spread(times[name]) for name in names]
        axes.barh([NAMES[name] for name in names], middle, xerr=spread, color=[_color(name, colors) for name in names],
                  ecolor=colors["ink"], height=0.6)
        for row, (value, around) in enumerate(zip(middle, spread)):
            axes.annotate(f"{value:.1f} ± {around:.1f} ms", (value + around, row), xytext=(6, 0),
                          textcoords="offset points", va="center")
        axes.invert_yaxis()
        axes.set_xlim(0, max(middle) * 1.35)
        axes.set_xlabel("wall time of the sample on .NET in ms, median; shorter is better")
    _draw(folder, "starts", (7, 2.2), fill)


def draw_versions(folder, measured):
    """Lines on two logarithmic axes."""
    counts, growth = measured

    def fill(_, axes, colors):
        for name, figures in growth.items():
            millions = [figure / 1e6 for figure in figures]
            axes.loglog(counts, millions, color=_color(name, colors), marker=MARKS[name], label=NAMES[name])
        axes.set_xlabel("version folders under host/fxr")
        axes.set_ylabel("instructions of a launch, millions")
        axes.set_yticks([2, 5, 10, 20, 50, 100])
        _plain(axes.xaxis, axes.yaxis)
        axes.legend(frameon=False)
    _draw(folder, "versions", (7, 3.2), fill)


def draw_lines(folder, measured):
    """The launcher's time, and its memory on an axis of its own."""
    counts, times, memory = measured

    def fill(_, axes, colors):
        axes.loglog(counts, times, color=colors["ours"], marker="o", label="wall time, ms")
        axes.set_xlabel("lines of the settings")
        axes.set_ylabel("wall time, ms")
        right = axes.twinx()
        right.loglog(counts, [peak / 1024 for peak in memory], color=colors["theirs"], marker="s", label="MiB")
        right.set_ylabel("peak memory, MiB")
        right.spines["right"].set_visible(True)
        _plain(axes.xaxis, axes.yaxis, right.yaxis)
        axes.legend(handles=axes.lines + right.lines, labels=["wall time", "peak memory"], frameon=False)
    _draw(folder, "settings", (7, 3.2), fill)

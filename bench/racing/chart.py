"""Draws the races of a page as an SVG chart: in every task the time of kestrine beside that of the fastest other tool."""
import re
from dataclasses import dataclass
from html import escape

OURS = "kestrine"
WIDTH, LABEL, BAR_LEFT, BAR_LENGTH = 860, 16, 330, 330
ROW, BAR, TOP, BOTTOM = 40, 13, 64, 14
STYLE = """text { font: 13px system-ui, sans-serif; fill: #24292f }
.title { font-size: 16px; font-weight: 600 } .small { font-size: 12px; fill: #57606a }
.panel { fill: #ffffff } .ours { fill: #c2571a } .peer { fill: #b8c0c8 }
@media (prefers-color-scheme: dark) {
text { fill: #e6edf3 } .small { fill: #9198a1 } .panel { fill: #0d1117 } .ours { fill: #e07a1f } .peer { fill: #4a525b }
}"""


@dataclass(frozen=True)
class Race:
    """The median ratio of our wall time to that of the fastest peer."""
    title: str
    peer: str
    ratio: float


def races_in(page):
    """The races of a page of report.py that had peers."""
    races = []
    for section in re.split(r"^## ", page, flags=re.MULTILINE)[1:]:
        title = re.match(r"T\d+\S*: (.*)", section)
        peer = re.search(r"; the fastest peer is (.*)\.$", section, re.MULTILINE)
        ours = re.search(rf"^\| {re.escape(OURS)} \| ([\d.]+) ", section, re.MULTILINE)
        if title and peer and ours:
            races.append(Race(title[1], peer[1], float(ours[1])))
    return races


def bar(top, share, kind, label):
    length = BAR_LENGTH * share
    return (f'<rect class="{kind}" x="{BAR_LEFT}" y="{top}" width="{length:.1f}" height="{BAR}" rx="2"/>\n'
            f'<text class="small" x="{BAR_LEFT + length + 8:.1f}" y="{top + BAR - 2}">{escape(label)}</text>\n')


def drawn(races):
    """The longest bar fills the space for bars."""
    longest = max([1.0, *(race.ratio for race in races)])
    height = TOP + ROW * len(races) + BOTTOM
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{height}" viewBox="0 0 {WIDTH} {height}">\n',
             f"<style>\n{STYLE}\n</style>\n", f'<rect class="panel" width="{WIDTH}" height="{height}" rx="6"/>\n',
             f'<text class="title" x="{LABEL}" y="28">Time for the same work, with the start of the program</text>\n',
             f'<text class="small" x="{LABEL}" y="48">The fastest other tool takes 1. A shorter bar is better. '
             "All figures: docs/benchmarks.md</text>\n"]
    for number, race in enumerate(races):
        top = TOP + ROW * number
        parts.append(f'<text x="{LABEL}" y="{top + BAR + 4}">{escape(race.title)}</text>\n')
        parts.append(bar(top, race.ratio / longest, "ours", f"{OURS} {race.ratio:.2f}"))
        parts.append(bar(top + BAR + 2, 1 / longest, "peer", race.peer))
    return "".join([*parts, "</svg>\n"])


def chart_of(page):
    return drawn(races_in(page))

"""Writes docs/formats.md from the table, from what is kept, which was found by trying, and from the measured costs."""
import re
from dataclasses import dataclass
from pathlib import Path

from formats import FORMATS
from libraries import read_libraries
from written_rows import OUTPUTS

PATH = Path(__file__).resolve().parent.parent.parent / "docs/formats.md"
HEAD = """# Formats

Written by `scripts/formats`. It makes files of every variant below, converts them, and compares the pixels with known ones or
with those of another program; where it does not, the page says so. The ordinary tests repeat this and compare the page with what
they find. What is kept of a file was found in the same way.

"Held" is memory that grows with the whole picture. The costs are those of one picture
of 12 megapixels: for reading, that of converting it to a JPEG of 1200 pixels; for writing, that of converting a PPM of the same
size. The memory is the peak of the process above that of `kestrinectl --version`, and up to 2 MiB too low, because the least that
can be measured is about 8 MiB. The time is that of all processors, the start of the program included. Both are medians. They
depend on the machine; compare them with each other.

{machine}
"""
UNMEASURED = "?"


@dataclass(frozen=True)
class Cost:
    """The costs as shown: MiB, and seconds of processor time."""
    memory: str = UNMEASURED
    time: str = UNMEASURED


def table(header, rows):
    lines = ["| " + " | ".join(row) + " |" for row in [header, ["---"] * len(header), *rows]]
    return "\n".join(lines) + "\n"


def title_of(row):
    """What stands before a colon names the format, the rest its kinds."""
    return row.name.partition(":")[0]


def anchor_of(row):
    return re.sub(r"[^\w -]", "", title_of(row).lower()).replace(" ", "-")


def with_notes(kept, notes):
    return ", ".join(what + (f" ({notes[what]})" if what in notes else "") for what in kept)


def libraries_of(row, known):
    parts = [f"our own code ({row.ours})"] if row.ours else []
    for name in row.libraries:
        library = known[name]
        parts.append(f"{library.title} (Debian package: {library.packages}; licence: {library.licence})")
    return "; ".join(parts) or "our own code"


def short_libraries_of(row):
    return ", ".join((["ours"] if row.ours or not row.libraries else []) + list(row.libraries))


def points(lines):
    return "".join(f"- {line}\n" for line in lines)


REMARKS = {"all": "", "some": " (some files are only converted, not compared)", "none": " (only converted, not compared)"}


def section_of(row, found, cost, known):
    kept = found.kept
    lost = [what for what in row.carriers if what not in kept]
    facts = []
    if kept:
        facts.append(f"**Kept**: {with_notes(kept, row.kept_notes)}")
    if lost:
        facts.append(f"**Not kept**: {', '.join(lost)}")
    facts.append(f"**Decoded by**: {libraries_of(row, known)}")
    facts.append(f"**Held**: {row.held}")
    if row.picture:
        note = f" ({row.cost_note})" if row.cost_note else ""
        facts.append(f"**Cost of 12 megapixels**: {cost.memory} MiB, {cost.time} s{note}")
    parts = [f"### {title_of(row)}\n"]
    if ":" in row.name:
        parts.append(row.name.partition(":")[2].strip() + "\n")
    parts += [points(facts), "Read:\n", points(variant.text + REMARKS[found.compared[variant.text]] for variant in row.read)]
    if row.refused:
        parts += ["Not read:\n", points(f"{refusal.text}: {refusal.reason}" for refusal in row.refused)]
    parts.extend(note + "\n" for note in row.notes)
    return "\n".join(parts)


def overview(found, costs):
    rows = [[f"[{title_of(row)}](#{anchor_of(row)})", short_libraries_of(row), ", ".join(found[row.name].kept),
             costs[row.name].memory if row.picture else "", costs[row.name].time if row.picture else ""] for row in FORMATS]
    return table(["format", "decoded by", "kept", "MiB", "s"], rows)


def output_section(row, kept, cost, known):
    facts = [f"**By**: {row.by}", *[kind.text for kind in row.kinds if kind.text]]
    if row.longest_side:
        facts.append(f"At most {row.longest_side} pixels on a side")
    facts += [f"**Kept**: {', '.join(kept)}", f"**Encoded by**: {libraries_of(row, known)}", f"**Held**: {row.held}",
              f"**Cost of 12 megapixels**: {cost.memory} MiB, {cost.time} s"]
    return f"### {row.name}, written\n\n" + points(facts)


def page(machine, found, costs, written, writing_costs):
    """By the names of the formats: `found` as trial.Found, `written` as lists of what is kept, the costs as Cost."""
    known = read_libraries()
    parts = [HEAD.format(machine=machine), "## Read\n", overview(found, costs)]
    parts += [section_of(row, found[row.name], costs[row.name], known) for row in FORMATS]
    parts.append("Every other reason why a file is not read is in its message.\n")
    parts.append("## Written\n")
    parts += [output_section(row, written[row.name], writing_costs[row.name], known) for row in OUTPUTS]
    return "\n".join(parts)


# Measured figures of an earlier page.
def machine_of(text):
    """The lines of a page that describe the machine and the date."""
    found = re.search(r"depend on the machine; compare them with each other\.\n\n(.*?)\n\n## Read", text,
                      re.DOTALL)
    return found.group(1) if found else ""


def costs_of(text):
    """The costs of reading and of writing, by the titles of the sections."""
    costs = {}
    for section in re.split(r"^### ", text, flags=re.MULTILINE)[1:]:
        found = re.search(r"\*\*Cost of 12 megapixels\*\*: (\S+) MiB, (\S+) s", section)
        if found:
            costs[section.partition("\n")[0]] = Cost(*found.groups())
    reading = {row.name: costs.get(title_of(row), Cost()) for row in FORMATS}
    writing = {row.name: costs.get(f"{row.name}, written", Cost()) for row in OUTPUTS}
    return reading, writing

"""What docs/dependencies.md says about the libraries."""
from dataclasses import dataclass
from pathlib import Path

PAGE = Path(__file__).resolve().parent.parent.parent / "docs/dependencies.md"


@dataclass(frozen=True)
class Library:
    title: str  # name and version
    packages: str
    licence: str


def read_libraries():
    """The libraries by name, without the version."""
    libraries = {}
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        if line.startswith("|") and len(cells) == 6:
            libraries[cells[0].split(" ")[0]] = Library(*cells[:3])
    return libraries

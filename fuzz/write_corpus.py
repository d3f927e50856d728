"""Writes the files of a corpus."""
import pathlib


def write_corpus(name, files):
    """Files are pairs of a name and its bytes."""
    folder = pathlib.Path(__file__).parent / "corpus" / name
    folder.mkdir(parents=True, exist_ok=True)
    for file, content in files:
        (folder / file).write_bytes(content)
        print(file, len(content))

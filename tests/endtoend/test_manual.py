"""The manual pages and the completion list exactly the options and commands of the tools."""
import re
import subprocess
import unittest
from pathlib import Path

import pictures
from tools import BIN, ToolTest, main

SHARE = Path(__file__).resolve().parent.parent.parent / "share"
MANUAL = SHARE / "man/man1/kestrinectl.1"
COMMANDS = [("convert",), ("plan",), ("run",), ("merge",), ("compare",), ("undo",), ("history",), ("explain",), ("exif",), ("doctor",), ("help",)] + [
    ("sets", name)
    for name in ("list", "show", "add", "edit", "remove", "select", "export", "import", "where", "preview")
] + [("desktop", name) for name in ("install", "remove", "status")]
FAMILIES = {command[0] for command in COMMANDS if len(command) == 2}


def long_options(text):
    return set(re.findall(r"--[a-z][a-z-]*", text)) - {"--help"}


class Manual(ToolTest):
    def help(self, *command):
        return self.kestrinectl(*command, "--help").stdout.decode()

    def offered(self):
        return {command: long_options(self.help(*command)) for command in [(), *COMMANDS]}

    def test_the_pages_are_well_formed(self):
        for page in sorted((SHARE / "man").glob("man*/*")):
            done = subprocess.run(["groff", "-man", "-ww", "-z", page], capture_output=True, check=False)
            self.assertEqual((done.returncode, done.stderr), (0, b""), page.name)

    def test_the_page_of_kestrinectl_lists_every_option_and_no_other(self):
        told = long_options(MANUAL.read_text().replace("\\-", "-"))
        self.assertEqual(told, set().union(*self.offered().values()))

    def test_the_page_of_kestrinectl_lists_every_command(self):
        told = MANUAL.read_text()
        for command in COMMANDS:
            self.assertIn(" ".join(command) if len(command) == 2 else f".SS {command[0]}", told)


class Completion(ToolTest):
    def completed(self, *words, tool="kestrinectl"):
        """What the last word can be completed to."""
        script = (
            f'source "{SHARE}/bash-completion/completions/{tool}"\n'
            "compopt() { :; }\n" # works only while bash itself completes
            f'COMP_WORDS=({tool} "$@"); COMP_CWORD=$#\n'
            f"_{tool}\n"
            'printf "%s\\n" "${COMPREPLY[@]}"\n'
        )
        environment = {**self.environment, "PATH": f"{BIN}:/usr/bin:/bin"}
        done = subprocess.run(["bash", "-c", script, "bash", *words], env=environment, cwd=self.folder,
                              capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr, "")
        return done.stdout.split("\n")[:-1]

    def test_the_options_of_every_command_are_completed(self):
        for command in COMMANDS:
            listed = long_options(self.kestrinectl(*command, "--help").stdout.decode())
            self.assertEqual(set(self.completed(*command, "--")) - {"--help", ""}, listed, command)

    def test_commands_and_formats_are_completed(self):
        self.assertEqual(self.completed("se"), ["sets"])
        self.assertEqual(self.completed("--v"), ["--version"])
        self.assertEqual(self.completed("help", "co"), ["convert", "compare"])
        self.assertEqual(self.completed("help", "sets", "ex"), ["export"])
        self.assertEqual(self.completed("sets", "ex"), ["export"])
        self.assertEqual(self.completed("desktop", "in"), ["install"])
        self.assertEqual(self.completed("help", "desktop", "s"), ["status"])
        self.assertEqual(self.completed("sets", "add", "A", "--format", "j"), ["jpeg"])

    def test_the_page_and_the_completion_have_all_formats(self):
        help_ = self.kestrinectl("sets", "add", "--help").stdout.decode()
        formats = re.split(", | or ", re.search(r"Output format: ([^(]+) \(", " ".join(help_.split()))[1])
        self.assertEqual(self.completed("sets", "add", "A", "--format", ""), formats)
        self.assertIn('\\-\\-format " ' + '" | '.join(formats[:1]) + '" | ' + " | ".join(formats[1:]) + "\n",
                      MANUAL.read_text())

    def test_formats_are_completed_after_a_comma_where_several_are_taken(self):
        self.assertEqual(self.completed("compare", "--format", "w"), ["webp"])
        self.assertEqual(self.completed("compare", "--format", "jpeg,w"), ["jpeg,webp"])
        self.assertEqual(self.completed("convert", "--format", "jpeg,w"), [""])

    def test_set_names_are_completed_with_quoted_spaces(self):
        for name in ("Web", "Web large", "Print"):
            self.kestrinectl("sets", "add", name)
        self.assertEqual(self.completed("sets", "show", "W"), ["Web", r"Web\ large"])
        self.assertEqual(self.completed("convert", "--set", "P"), ["Print"])
        self.assertEqual(self.completed("-set", "P", tool="kestrine"), ["Print"])

    def test_completion_offers_stored_names_and_not_those_that_kestrine_lists(self):
        names = ["50%", "100%d", " a  b ", "two\nlines", "Grün"]
        self.store(*({"name": name} for name in names))
        for tool, words in (("kestrinectl", ("sets", "show", "")), ("kestrine", ("-set", ""))):
            offered = self.completed(*words, tool=tool)
            unquoted = subprocess.run(["bash", "-c", "printf '%s\\0' " + " ".join(offered)], capture_output=True,
                                      check=True).stdout.decode()
            self.assertEqual(unquoted.split("\0")[:-1], names)

    def test_a_name_is_completed_after_quoting_characters_too(self):
        self.store({"name": "Web large"}, {"name": "Web"})
        self.assertEqual(self.completed("sets", "show", r"Web\ l"), [r"Web\ large"])

    def test_runs_are_completed_for_undo(self):
        pictures.image(pictures.photo(8, 8)).save(self.folder / "a.png")
        for percent in ("50", "60"):
            self.kestrinectl("convert", "--percent", percent, "--replace", "a.png")
        self.assertEqual(self.completed("undo", ""), ["1", "2"])

    def test_files_are_completed_where_files_are_expected(self):
        (self.folder / "picture.jpg").touch()
        self.assertEqual(self.completed("convert", "pic"), ["picture.jpg"])
        self.assertEqual(self.completed("exif", "pic"), ["picture.jpg"])
        self.assertEqual(self.completed("compare", "pic"), ["picture.jpg"])
        self.assertEqual(self.completed("compare", "a.jpg", "-o", "pic"), ["picture.jpg"])
        self.assertEqual(self.completed("sets", "preview", "Web", "pic"), ["picture.jpg"])
        self.assertEqual(self.completed("sets", "preview", "pic"), [""])
        self.assertEqual(self.completed("sets", "import", "pic"), ["picture.jpg"])
        self.assertEqual(self.completed("pic", tool="kestrine"), ["picture.jpg"])
        self.assertEqual(self.completed("sets", "show", "pic"), [""])


class OtherShells:
    """What bash completes is completed in other shells too. A subclass says how to ask its shell."""

    def completed(self, *words):
        done = subprocess.run(self.question(words), env={**self.environment, "PATH": f"{BIN}:/usr/bin:/bin"}, cwd=self.folder,
                              capture_output=True, check=True)
        self.assertEqual(done.stderr, b"")
        return [line.split("\t")[0] for line in done.stdout.decode().splitlines()]

    def test_the_options_of_every_command_are_completed(self):
        for command in COMMANDS:
            listed = long_options(self.kestrinectl(*command, "--help").stdout.decode())
            offered = {word for word in self.completed(*command, "--") if word.startswith("--")}
            self.assertEqual(offered - {"--help"}, listed, command)

    def test_commands_are_completed(self):
        commands = {command[0] for command in COMMANDS}
        self.assertEqual(set(self.completed("")), commands)
        self.assertEqual(set(self.completed("help", "")), commands)
        for family in FAMILIES:
            subcommands = {command[1] for command in COMMANDS if len(command) == 2 and command[0] == family}
            self.assertEqual(set(self.completed(family, "")), subcommands)
            self.assertEqual(set(self.completed("help", family, "")), subcommands)

    def test_values_are_completed(self):
        for command in (("convert",), ("sets", "add", "A")):
            help_ = " ".join(self.kestrinectl(*command[:2], "--help").stdout.decode().split())
            formats = re.split(", | or ", re.search(r"Output format: ([^(]+) \(", help_)[1])
            self.assertEqual(sorted(self.completed(*command, "--format", "")), sorted(formats))
        for option, values in (("--isolation", ["auto", "strict", "off"]), ("--times", ["keep", "taken", "now"]),
                               ("--profile", ["keep", "srgb"]), ("--metadata", ["none", "rights", "exif", "all"])):
            self.assertEqual(sorted(self.completed("convert", option, "")), sorted(values))
        self.assertEqual(self.completed("convert", "--quality", ""), [])
        self.assertEqual(sorted(self.completed("compare", "--format", "")), sorted(self.completed("convert", "--format", "")))

    def test_sets_runs_and_files_are_completed(self):
        names = ["Web", "Web large", "$(touch x)", "a'b\"c", "Grün"]
        self.store(*({"name": name} for name in names))
        self.assertEqual(sorted(self.completed("sets", "show", "")), sorted(names))
        self.assertEqual(sorted(self.completed("convert", "--set", "")), sorted(names))
        self.assertEqual(sorted(self.completed("sets", "preview", "")), sorted(names))
        pictures.image(pictures.photo(8, 8)).save(self.folder / "a.png")
        self.kestrinectl("convert", "--percent", "50", "--replace", "a.png")
        self.assertEqual(self.completed("undo", ""), ["1"])
        self.assertEqual(self.completed("convert", "a"), ["a.png"])
        self.assertEqual(self.completed("sets", "preview", "Web", "a"), ["a.png"])
        self.assertEqual(self.completed("compare", "-o", "a"), ["a.png"])
        self.assertEqual(self.names(), [b"a.png"])


class Zsh(OtherShells, ToolTest):
    def question(self, words):
        # compadd works only while zsh itself completes.
        script = ('compadd() { shift; local word; for word in "$@"; do print -r -- "$word"; done }\n'
                  '_files() { print -rl -- "$words[CURRENT]"*(N) }\n'
                  'words=(kestrinectl "$@"); CURRENT=$#words\n'
                  f'source "{SHARE}/zsh/site-functions/_kestrinectl"\n')
        return ["zsh", "-f", "-c", script, "zsh", *words]

    def test_zsh_loads_it_for_the_program(self):
        script = (f'fpath=("{SHARE}/zsh/site-functions" $fpath); autoload -Uz compinit; compinit -u -D\n'
                  'print -r -- $_comps[kestrinectl]')
        done = subprocess.run(["zsh", "-f", "-c", script], env=self.environment, capture_output=True, check=True)
        self.assertEqual(done.stdout, b"_kestrinectl\n")


class Fish(OtherShells, ToolTest):
    def question(self, words):
        quoted = " ".join(words[:-1])
        return ["fish", "--no-config", "-c", f'source "{SHARE}/fish/vendor_completions.d/kestrinectl.fish"; '
                                             f'complete -C "kestrinectl {quoted} {words[-1]}"']


if __name__ == "__main__":
    main()

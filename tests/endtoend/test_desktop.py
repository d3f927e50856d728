"""kestrinectl desktop: actions for the sets in the menus of file managers, in the places and by the rules of each one."""
import json
import os
import shutil
import subprocess
from pathlib import Path

import pictures
from desktop_session import NotificationDesktop, dolphin, nemo, thunar
from tools import BIN, JPEG, ToolTest, main

MANAGERS = ("nautilus", "dolphin", "thunar", "nemo", "caja")
STRANGE = ['a "b"', "it's", "$(touch x)`touch x`", "50%F %% %", "<i>&amp;", "a;b|c&d", "back\\slash\\n", " spaces ",
           "_under_", "-l", "[x]", "ä", "@1", "~", "#"]


class DesktopTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.programs = self.home / "bin"
        self.programs.mkdir()
        self.environment = {"HOME": str(self.home), "PATH": str(self.programs), "LANG": "C",
                            "XDG_CONFIG_DIRS": str(self.home / "etc")}
        self.scripts = self.home / ".local/share/nautilus/scripts/Resize"
        self.caja_scripts = self.home / ".config/caja/scripts/Resize"
        self.menus = self.home / ".local/share/kio/servicemenus"
        self.nemo_actions = self.home / ".local/share/nemo/actions"
        self.uca = self.home / ".config/Thunar/uca.xml"
        self.notified = self.home / "notified"

    def program_there(self, name, text="#!/bin/sh\n"):
        (self.programs / name).write_text(text)
        (self.programs / name).chmod(0o755)

    def record_notifications(self):
        self.program_there("notify-send", f'#!/bin/sh\nprintf "%s\\n" "$@" >>"{self.notified}"\n')

    def sets(self, *names):
        self.store(*[{"name": name, "formatType": JPEG, "width": 20.0, "height": 20.0} for name in names])

    def desktop(self, *arguments, status=0, program=None):
        command = [program or BIN / "kestrinectl", "desktop", *arguments]
        done = subprocess.run(command, cwd=self.folder, env=self.environment, capture_output=True, timeout=120)
        self.assertEqual(done.returncode, status, done)
        return done.stdout.decode(), done.stderr.decode(errors="surrogateescape")

    def picture(self, name):
        pictures.image(pictures.photo(60, 40)).save(os.fsencode(self.folder / name), "JPEG")
        return self.folder / name

    def start(self, command, **environment):
        return subprocess.run(command, cwd=self.home, env={**self.environment, **environment}, capture_output=True,
                              timeout=120)

    def files(self):
        """All files of the home with their content."""
        return {path: path.read_bytes() for path in self.home.rglob("*") if path.is_file()}

    def selection_of(self, files):
        """The variables that Nautilus gives to a script."""
        return {"NAUTILUS_SCRIPT_SELECTED_FILE_PATHS": "".join(f"{file}\n" for file in files),
                "NAUTILUS_SCRIPT_SELECTED_URIS": "".join(file.as_uri() + "\n" for file in files)}


class Installing(DesktopTest):
    def test_actions_are_for_the_file_managers_that_are_found(self):
        self.sets("Web")
        self.program_there("nemo")
        self.program_there("caja")
        out, err = self.desktop("install")
        self.assertEqual(out, f"Nemo: 1 action in {self.nemo_actions}\nCaja: 1 action in {self.caja_scripts}\n")
        self.assertEqual(err, "")
        self.assertFalse(self.scripts.exists() or self.menus.exists() or self.uca.exists())

    def test_without_a_file_manager_nothing_is_installed(self):
        self.sets("Web")
        before = self.files()
        _, err = self.desktop("install", status=1)
        self.assertIn("--all", err)
        self.assertEqual(self.files(), before)

    def test_without_sets_there_is_nothing_to_install(self):
        _, err = self.desktop("install", "--all", status=1)
        self.assertIn("'kestrinectl sets add NAME' adds one", err)
        self.assertFalse(self.scripts.exists())

    def test_all_installs_for_every_file_manager_in_its_place(self):
        self.sets("Web")
        self.desktop("install", "--all")
        for path in (self.scripts / "Web", self.caja_scripts / "Web", self.menus / "kestrine-01.desktop",
                     self.nemo_actions / "kestrine-01.nemo_action", self.uca):
            self.assertTrue(path.is_file(), path)

    def test_the_folders_of_the_environment_are_used(self):
        self.sets("Web")
        self.environment["XDG_DATA_HOME"] = str(self.home / "data")
        self.desktop("install", "--all")
        self.assertTrue((self.home / "data/nautilus/scripts/Resize/Web").is_file())
        self.assertFalse(self.scripts.exists())

    def test_installing_again_changes_nothing_while_the_sets_stay(self):
        self.sets("Web", "Mail")
        self.desktop("install", "--all")
        times = {path: path.stat().st_mtime_ns for path in self.files()}
        self.desktop("install", "--all")
        self.assertEqual({path: path.stat().st_mtime_ns for path in self.files()}, times)

    def test_installing_again_brings_the_actions_up_to_date(self):
        self.sets("Web", "Mail")
        self.desktop("install", "--all")
        self.sets("Print")
        self.desktop("install")  # no file manager is found, but all have actions
        for folder in (self.scripts, self.caja_scripts):
            self.assertEqual(self.names(folder), [b"Print"])
        self.assertEqual(self.names(self.menus), [b"kestrine-01.desktop"])
        self.assertEqual(dolphin(self.menus / "kestrine-01.desktop")[0], "Print")
        self.assertEqual([nemo(path)[0] for path in self.nemo_actions.iterdir()], ["Print"])
        self.assertEqual([label for label, _ in thunar(self.uca)], ["Print"])

    def test_an_action_that_lost_the_right_to_be_run_gets_it_again(self):
        self.sets("Web")
        self.desktop("install", "--all")
        (self.menus / "kestrine-01.desktop").chmod(0o600)
        self.assertIn("out of date", self.desktop("status")[0])
        self.desktop("install")
        self.assertTrue(os.access(self.menus / "kestrine-01.desktop", os.X_OK))

    def test_remove_leaves_nothing_of_ours(self):
        before = set(self.files())
        self.sets("Web", "Mail")
        self.desktop("install", "--all")
        out, _ = self.desktop("remove")
        self.assertEqual(out.count("2 actions removed"), 5)
        self.assertEqual(set(self.files()) - before, {self.preferences, self.uca})
        self.assertEqual(thunar(self.uca), [])
        self.assertFalse(self.scripts.exists())
        self.assertEqual(self.desktop("remove"), ("no actions are installed\n", ""))

    def test_status_says_what_is_found_and_installed(self):
        self.sets("Web")
        self.program_there("caja")
        self.desktop("install")
        out, err = self.desktop("status")
        self.assertEqual(out.splitlines()[0], "Nautilus: not found, no actions")
        self.assertEqual(out.splitlines()[4], f"Caja: found, 1 action in {self.caja_scripts}, up to date")
        self.assertEqual(err, "")
        caja = json.loads(self.desktop("status", "--json")[0].splitlines()[4])
        self.assertEqual(caja, {"fileManager": "Caja", "found": True, "place": str(self.caja_scripts), "actions": 1, "edited": 0,
                                "prevented": 0, "state": "up to date"})
        self.sets("Other")
        out, err = self.desktop("status")
        self.assertIn("1 action in", out)
        self.assertIn("out of date", out)
        self.assertIn("'kestrinectl desktop install'", err)

    def test_a_change_of_names_reminds_of_the_actions(self):
        def reminds(*arguments, **options):
            return b"'kestrinectl desktop install'" in self.kestrinectl("sets", *arguments, **options).stderr
        self.sets("Web")
        self.assertFalse(reminds("add", "First"))
        self.desktop("install", "--all")
        self.assertFalse(reminds("edit", "Web", "--longest", "100"))
        self.assertTrue(reminds("edit", "Web", "--name", "Net"))
        self.desktop("install")
        self.assertTrue(reminds("add", "Mail"))
        self.desktop("install")
        exported = self.kestrinectl("sets", "export", "Mail").stdout
        self.assertTrue(reminds("remove", "Mail"))
        self.desktop("install")
        self.assertTrue(reminds("import", "-", input=exported))

    def test_the_command_for_actions_is_not_in_the_help(self):
        self.assertNotIn("  run ", self.desktop("--help")[0])


class Editing(DesktopTest):
    """What a user has made or changed stays."""

    def test_an_edited_action_stays_unless_it_may_be_overwritten(self):
        self.sets("Web")
        self.desktop("install", "--all")
        for path in (self.scripts / "Web", self.menus / "kestrine-01.desktop", self.uca):
            content = path.read_text()
            path.write_text(content.replace("desktop run", "desktop  run"))
            edited = path.read_text()
            self.assertNotEqual(edited, content)
            _, err = self.desktop("install", status=1)
            self.assertIn("was edited and is kept; --overwrite replaces it", err)
            _, err = self.desktop("remove", status=1)
            self.assertIn("was edited and is kept; --overwrite removes it", err)
            self.assertEqual(path.read_text(), edited)
            self.assertIn("1 edited, out of date", self.desktop("status")[0])
            self.desktop("install", "--all", "--overwrite")
            self.assertEqual(path.read_text(), content)

    def test_an_edited_action_is_removed_with_overwrite(self):
        self.sets("Web")
        self.desktop("install", "--all")
        for path in (self.scripts / "Web", self.uca):
            path.write_text(path.read_text().replace("desktop run", "desktop  run"))
        self.desktop("remove", "--overwrite")
        self.assertFalse(self.scripts.exists())
        self.assertEqual(thunar(self.uca), [])

    def test_edited_actions_of_sets_that_are_gone_are_counted(self):
        self.sets("Web", "Mail")
        self.desktop("install", "--all")
        for path in (self.scripts / "Web", self.uca):
            path.write_text(path.read_text().replace("desktop run --set-word Web", "desktop  run --set-word Web"))
        self.sets("Mail")
        out, err = self.desktop("install", status=1)
        self.assertEqual(err.count("was edited and is kept; --overwrite removes it"), 2)
        for place in (f"Nautilus: 2 actions in {self.scripts}", f"Caja: 1 action in {self.caja_scripts}",
                      f"Thunar: 2 actions in {self.uca}"):
            self.assertIn(place + "\n", out)
        out, _ = self.desktop("remove", status=1)
        self.assertIn("Nautilus: 1 action removed\n", out)
        self.assertEqual(self.names(self.scripts), [b"Web"])

    def test_files_of_others_stay(self):
        self.sets("Web", "Mail")
        others = [self.scripts / "Own", self.menus / "own.desktop", self.nemo_actions / "own.nemo_action",
                  self.scripts / "Web"]
        for path in others:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("#!/bin/sh\n# mine\n")
        out, err = self.desktop("install", "--all", status=1)
        self.assertIn(f"Nautilus: 1 action in {self.scripts}\n", out)
        self.assertIn(f"Nautilus: {self.scripts / 'Web'} is not an action of kestrinectl; move it away", err)
        self.assertIn(f"Nautilus: not found, 1 action in {self.scripts}, 1 prevented by files of others, incomplete\n",
                      self.desktop("status")[0])
        self.assertTrue((self.scripts / "Mail").exists())
        self.desktop("remove", "--overwrite")
        for path in others:
            self.assertEqual(path.read_text(), "#!/bin/sh\n# mine\n")
        self.assertEqual(self.names(self.scripts), [b"Own", b"Web"])


class Names(DesktopTest):
    """Names of sets and of files never become code, and programs in any folder are found."""

    def setUp(self):
        super().setUp()
        self.sets(*STRANGE)
        self.one, self.two = self.picture("50% $(touch x) 'ä\"\n`b`.jpg"), self.picture("_b %U;&|<.jpg")

    def check(self, label, command, **environment):
        """The label is the name of a set, and the command makes the results of this set and nothing else."""
        self.assertIn(label, STRANGE)
        before = self.files()
        done = self.start(command, **environment)
        self.assertEqual(done.returncode, 0, done)
        expected = {self.folder / label / picture.name for picture in (self.one, self.two)}
        self.assertEqual(set(self.files()) - set(before), expected)
        shutil.rmtree(self.folder / label)

    def check_all(self, readers):
        self.assertEqual(sorted(label for label, _ in readers), sorted(STRANGE))
        for label, command in readers:
            with self.subTest(label=label):
                self.check(label, command([self.one, self.two]))

    def test_in_dolphin(self):
        self.desktop("install", "--all")
        self.check_all([dolphin(path) for path in self.menus.iterdir()])

    def test_in_nemo(self):
        self.desktop("install", "--all")
        self.check_all([nemo(path) for path in self.nemo_actions.iterdir()])

    def test_in_thunar(self):
        self.desktop("install", "--all")
        self.check_all(thunar(self.uca))

    def test_in_nautilus_and_caja(self):
        _, err = self.desktop("install", "--all")
        self.assertIn('Nautilus: no action for the set "~": files with such names are hidden', err)
        for folder, prefix in ((self.scripts, "NAUTILUS"), (self.caja_scripts, "CAJA")):
            scripts = sorted(folder.iterdir())
            self.assertEqual(len(scripts), len(STRANGE) - 1)
            variables = {name.replace("NAUTILUS", prefix): value
                         for name, value in self.selection_of([self.one, self.two]).items()}
            for script in scripts:
                with self.subTest(script=script):
                    self.assertNotIn("%", script.name)
                    self.check(script.name.replace("\uff05", "%"), [script, "one", "two"], **variables)

    def test_the_validator_for_desktop_entries_finds_nothing_else(self):
        self.desktop("install", "--all")
        for path in self.menus.iterdir():
            done = subprocess.run(["desktop-file-validate", "--no-hints", path], capture_output=True, text=True)
            # KIO demands these keys and this type, which the standard keeps for KDE.
            expected = {f'{path}: error: key "{key}" is present in group "Desktop Entry", but the type is "Service" while '
                        'this key is only valid for type "Application"' for key in ("Actions", "MimeType")}
            self.assertEqual((done.returncode, done.stderr, set(done.stdout.splitlines())), (1, "", expected))

    def test_a_program_in_a_folder_with_a_strange_name_is_found(self):
        program = self.home / "a 'b' \"$(c)\" \\ä & <d>/kestrinectl"
        program.parent.mkdir()
        shutil.copy(BIN / "kestrinectl", program)
        self.sets("Web")
        self.desktop("install", "--all", program=program)
        files = [self.one, self.two]
        for label, command in (dolphin(self.menus / "kestrine-01.desktop"),
                               nemo(self.nemo_actions / "kestrine-01.nemo_action"), *thunar(self.uca),
                               ("Web", lambda _: [self.scripts / "Web"])):
            words = command(files)
            self.assertEqual(label, "Web")
            self.assertEqual(self.start(words, **self.selection_of(files)).returncode, 0, words)
            self.assertEqual(len(self.names("Web")), 2)
            shutil.rmtree(self.folder / "Web")

    def test_a_program_that_not_all_can_start_is_refused(self):
        program = self.home / "50%/kestrinectl"
        program.parent.mkdir()
        shutil.copy(BIN / "kestrinectl", program)
        self.sets("Web")
        _, err = self.desktop("install", "--all", program=program, status=1)
        self.assertIn("install the program in a folder without %", err)
        self.assertFalse(self.scripts.exists() or self.uca.exists())

    def test_sets_that_cannot_be_shown_or_told_apart_have_no_action(self):
        self.sets("two\nlines", b"\xff", "Twin", "Twin", "", "Web", "\x1b[31m")
        _, err = self.desktop("install", "--all")
        self.assertEqual(err.count("no action for the set"), 5)
        self.assertIn('no action for the set "Twin": several sets have the name', err)
        self.assertIn('no action for the set "\udcff": the name is not valid UTF-8', err)
        self.assertEqual(self.names(self.scripts), [b"Web"])
        self.assertEqual([label for label, _ in thunar(self.uca)], ["Web"])
        self.assertEqual(self.names(self.menus), [b"kestrine-01.desktop"])

    def test_similar_script_names_are_not_one_action(self):
        self.sets("5%", "5\uff05", ".hidden", "x" * 255 + "y")
        _, err = self.desktop("install", "--all")
        self.assertEqual(self.names(self.scripts), ["5\uff05".encode()])
        self.assertIn('Nautilus: no action for the set "5\uff05": another set has a similar name', err)
        self.assertEqual(len(self.names(self.menus)), 4)


OTHERS = """<?xml version="1.0" encoding="UTF-8"?>
<!-- mine -->
<actions>
<action>
\t<icon></icon>
\t<name>Söme &amp; thing</name>
\t<unique-id>1700000000000000-1</unique-id>
\t<command>touch %f</command>
</action>   <action><name>Web</name><command>x</command></action>
<!-- last -->
</actions>
"""


class Thunar(DesktopTest):
    """The file of Thunar is the user's."""

    def write(self, content, path=None):
        path = path or self.uca
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content.encode() if isinstance(content, str) else content)

    def test_everything_else_in_the_file_stays(self):
        self.write(OTHERS)
        self.sets("Web", "Mail")
        self.desktop("install", "--all")
        self.assertEqual([label for label, _ in thunar(self.uca)], ["Söme & thing", "Web", "Web", "Mail"])
        self.sets("Mail")
        self.desktop("install")
        self.assertEqual([label for label, _ in thunar(self.uca)], ["Söme & thing", "Web", "Mail"])
        self.desktop("remove")
        self.assertEqual(self.uca.read_text(), OTHERS)

    def test_the_actions_of_the_system_stay_in_the_menu(self):
        system = self.home / "etc/Thunar/uca.xml"
        self.write(OTHERS, system)
        self.sets("Mail")
        self.desktop("install", "--all")
        self.assertEqual([label for label, _ in thunar(self.uca)], ["Söme & thing", "Web", "Mail"])
        self.assertEqual(system.read_text(), OTHERS)

    def test_what_thunar_wrote_again_is_known_and_not_edited(self):
        self.sets("W&b")
        self.desktop("install", "--all")
        # Thunar changes the order, spaces and quotation marks, and adds empty elements.
        lines = self.uca.read_text().replace("&#39;", "'").splitlines()
        fields = sorted(line for line in lines if line.startswith("\t<"))
        self.write("\n".join(['<?xml version="1.0" encoding="UTF-8"?>', "<actions>", "<action>", "\t<range></range>",
                              *reversed(fields), "</action>", "</actions>", ""]))
        self.assertIn("up to date", self.desktop("status")[0])
        self.desktop("remove")
        self.assertEqual(thunar(self.uca), [])

    def test_a_file_without_actions_gets_some(self):
        for content in ("<actions/>", '<?xml version="1.0"?>\n<actions a="/>" />\n<!-- end -->', "<actions></actions>"):
            self.write(content)
            self.sets("Web")
            self.desktop("install", "--all")
            self.assertEqual([label for label, _ in thunar(self.uca)], ["Web"])

    def test_a_file_that_cannot_be_read_is_refused(self):
        for content in ("<actions><action>", "", "<menu></menu>", "<actions/>".encode("utf-16"),
                        '<?xml version="1.0" encoding="latin1"?><actions><!-- ä --></actions>'.encode("latin1"),
                        '<!DOCTYPE actions [<!ENTITY a "<action/>">]><actions>&a;</actions>', "<actions>\0</actions>",
                        " " * (1 << 20) + "<actions/>"):
            with self.subTest(content=content[:80]):
                self.write(content)
                before = self.uca.read_bytes()
                self.sets("Web")
                _, err = self.desktop("install", "--all", status=1)
                self.assertRegex(err, "Thunar: .*uca.xml")
                self.assertEqual(self.uca.read_bytes(), before)
                self.assertTrue((self.scripts / "Web").exists())

    def test_a_link_to_the_file_stays_a_link(self):
        kept = self.home / "dotfiles/uca.xml"
        self.write(OTHERS, kept)
        self.uca.parent.mkdir(parents=True)
        self.uca.symlink_to(kept)
        self.sets("Mail")
        self.desktop("install", "--all")
        self.assertTrue(self.uca.is_symlink())
        self.assertIn("Mail", kept.read_text())


class Running(DesktopTest):
    """What the actions do."""

    def setUp(self):
        super().setUp()
        self.record_notifications()
        self.sets("Web")
        self.desktop("install", "--all")
        self.script = self.scripts / "Web"

    def notification(self):
        return self.notified.read_text().splitlines()[3:]

    def test_several_files_are_one_run(self):
        self.store({"name": "Web", "formatType": JPEG, "replaceFile": 1})
        files = [self.picture("a.jpg"), self.picture("b.jpg")]
        self.assertEqual(self.start([self.script], **self.selection_of(files)).returncode, 0)
        history = self.kestrinectl("history", "--json").stdout.splitlines()
        self.assertEqual([json.loads(line)["files"] for line in history], [2])

    def test_success_shows_nothing(self):
        done = self.start([self.script], **self.selection_of([self.picture("a.jpg")]))
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))
        self.assertFalse(self.notified.exists())

    def test_a_failure_shows_the_first_message(self):
        (self.folder / "no.jpg").write_bytes(b"no picture")
        done = self.start([self.script], **self.selection_of([self.folder / "no.jpg", self.picture("a.jpg")]))
        self.assertEqual(done.returncode, 1)
        summary, *body = self.notification()
        self.assertEqual(summary, "Not all pictures could be converted")
        self.assertEqual(body[0], done.stderr.decode().splitlines()[0].removeprefix("kestrinectl: "))
        self.assertIn("no.jpg", body[0])
        self.assertIn("1 of 2 files", body[1])
        self.assertTrue((self.folder / "Web/a.jpg").exists())

    def test_a_failure_without_notifications_is_still_a_failure(self):
        (self.programs / "notify-send").unlink()
        (self.folder / "no.jpg").write_bytes(b"no picture")
        self.assertEqual(self.start([self.script], **self.selection_of([self.folder / "no.jpg"])).returncode, 1)

    def test_a_set_that_is_gone_is_reported_and_never_another_one_used(self):
        self.sets("@1", "Other")
        self.desktop("install")
        script = self.scripts / "@1"
        content = script.read_text()
        self.sets("Other")
        done = self.start(["/bin/sh", "-c", content], **self.selection_of([self.picture("a.jpg")]))
        self.assertEqual(done.returncode, 1)
        self.assertIn('no set named "@1"', self.notification()[1].replace("&quot;", '"'))
        self.assertEqual(self.names(), [b"a.jpg"])

    def test_what_is_not_on_this_computer_is_reported(self):
        for uris, message in (("sftp://host/a.jpg\n", "sftp://host/a.jpg is not a file on this computer"),
                              ("file:///%00\n", "file:///%00 is not a file"), ("", "no pictures are selected")):
            self.notified.unlink(missing_ok=True)
            done = self.start([self.script], NAUTILUS_SCRIPT_SELECTED_URIS=uris)
            self.assertEqual(done.returncode, 1)
            self.assertIn(message, done.stderr.decode())
            self.assertIn(message, self.notification()[1])

    def test_relative_paths_and_dashes_are_files(self):
        self.picture("-")
        done = self.kestrinectl("desktop", "run", "--set-word", "Web", "--", "-")
        self.assertEqual(done.returncode, 0, done)
        self.assertEqual(len(self.names("Web")), 1)

    def test_the_desktop_shows_the_message_as_it_is(self):
        (self.programs / "notify-send").unlink()
        (self.programs / "notify-send").symlink_to("/usr/bin/notify-send")
        name = "<b>&amp; \\n 'x' \"y\" ä.jpg"
        (self.folder / name).write_bytes(b"no picture")
        (self.folder / os.fsdecode(b"\xff.jpg")).write_bytes(b"no picture")
        with NotificationDesktop() as desktop:
            for file, shown in ((name, "&lt;b&gt;&amp;amp; \\n &#39;x&#39; &quot;y&quot; ä.jpg"),
                                (os.fsdecode(b"\xff.jpg"), "\\xff.jpg")):
                done = self.start([self.script], DBUS_SESSION_BUS_ADDRESS=desktop.address,
                                  **self.selection_of([self.folder / file]))
                self.assertEqual(done.returncode, 1)
                application, summary, body = desktop.next()
                self.assertEqual((application, summary), ("kestrine", "Not all pictures could be converted"))
                self.assertIn(f"/{shown}", body)


if __name__ == "__main__":
    main()

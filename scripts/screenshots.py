#!/usr/bin/python3
"""Makes the pictures of docs/pictures anew, each window from the built program on its own screen.

Needs ImageMagick beside what the tests need. Run it after the release build and look at the result.
"""
import datetime
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/support"))
from screen import Screen, wait_for

PICTURES = ROOT / "docs/pictures"
# When the agency's files were written, as the windows say.
SAVED = datetime.datetime(2026, 11, 20, 16, 5).timestamp()
SCHEMES = ("Blue", "Gold", "Silver", "Green", "Grey", "Custom")


class Studio(Screen):
    def take(self, name, window=None, width=None):
        """Once two pictures in a row are alike, the window has been drawn."""
        def shot():
            return subprocess.run(["import", "-window", window or self.main, "ppm:-"],
                                  env=self.environment, capture_output=True, check=True).stdout
        last = [b""]

        def settled():
            before, last[0] = last[0], shot()
            return before == last[0]
        wait_for("a drawn window", settled)
        smaller = ["-resize", f"{width}x"] if width else []
        subprocess.run(["convert", "-", *smaller, "-bordercolor", "#999", "-border", "1", "+dither",
                        "-colors", "100", "-define", "png:compression-level=9", "-strip",
                        f"png8:{PICTURES / name}.png"], input=last[0], check=True)

    def dialog(self, name, title, *keys):
        """The dialog that these keys of the main window open."""
        self.window_of(self.main)
        self.keys(*keys)
        self.dialog_of(name, title)

    def unfinished_run(self):
        """A log as a run of e-mails leaves it that was ended in the middle."""
        name = "Letters 2026-11-20 163000.log"
        code = "the code \"<<Rent Paid Too>>\" was not filled in; did you mean \"Rent Paid To\"?"
        recipients = (
            ("Mei Huang", "T00007", "mailed", "mei@example.test"),
            ("Ben Huang", "T00032", "held", code), ("Ben Young", "T00028", "held", code),
            ("Tama O'Brien", "T00006", "no address", "no e-mail address"),
            ("Claire Xu", "T00024", "no address", "no e-mail address"),
            ("Jane Smith", "T00001", "sending", "no answer to the letter from mail.example.test"),
            ("Ana Young", "T00012", None, None))
        lines = [("Tenora run log", "2"), ("log", name), ("started", "2026-11-20 16:30:00"),
                 ("data folder", str(self.home)), ("template", "Templates", "Rent review"),
                 ("destination", "email"), ("subject", "Your rent"), ("pdf", "no")]
        for number, (person, code, _, _) in enumerate(recipients, 1):
            lines.append(("recipient", str(number), person, code))
        lines.append(("letters",))
        for number, (person, _, state, detail) in enumerate(recipients, 1):
            if state:
                held = ("0 bytes",) if state == "held" else ()
                lines.append((state, str(number), person, f"{person}/Rent review.rtf", detail, *held))
        lines.append(("stopped", "2026-11-20 16:31:00"))
        (self.home / name).write_text("".join("\t".join(line) + "\n" for line in lines))

    def find_and_replace(self):
        """The panel after Replace All in some lines of a letter, of which a code keeps its words."""
        self.window_of(self.main)
        self.keys("ctrl+Home", *["shift+Down"] * 12, "ctrl+h")
        self.type("tenancy")
        self.keys("Tab")
        self.type("lease")
        self.keys("alt+a")
        self.take("find-and-replace")
        self.keys("Escape", "ctrl+z", "ctrl+Home")

    def unsaved_letters(self):
        """What the start after a kill asks about a letter that was not saved."""
        kept = self.folder / "state/tenora/unsaved"
        self.window_of(self.main)
        self.keys("ctrl+Home")
        self.click(self.main, 800, 458)  # behind the greeting
        self.type(", haere mai!")
        wait_for("the kept letter", lambda: any("haere mai!" in file.read_text()
                                                for file in kept.glob("session-*/*.letter")))
        self.running.kill()
        self.running.wait()
        for log in self.home.glob("Letters *.log"):
            log.unlink()  # its run would be asked about too
        self.start(lambda: self.dialog_of("unsaved-letters", "Unsaved Letters"))

    def queue(self):
        """A run over two branches of a server, of which one waits and some letters are left."""
        database = subprocess.run([ROOT / "scripts/private_postgres.sh", "start"], check=True,
                                  capture_output=True, text=True).stdout.strip()
        services = self.folder / "services"
        services.write_text(f"[rents]\nhost={database}\ndbname=rents\nuser=tenora\n")
        self.environment["PGSERVICEFILE"] = str(services)

        def statement(sql):
            return subprocess.run(["psql", "-Atqh", database, "-U", "tenora", "rents", "-c", sql],
                                  check=True, capture_output=True, text=True).stdout.strip()
        worker = None
        try:
            subprocess.run(["createdb", "-h", database, "-U", "tenora", "rents"], check=True)
            self.run("server", "init", "rents")
            for branch in ("North", "South"):
                # It tells what is odd in the sample agency, with status 1.
                subprocess.run([self.program, "server", "import", self.home / "property.mdb",
                                "--branch", branch, "--service", "rents"], env=self.environment,
                               capture_output=True)
            (self.home / "settings/machine.settings").write_text(
                "Tenora settings, version 1\n\n[SOFTWARE\\Tenora\\Settings]\n"
                '"Networkable" = "1"\n"DatabaseLocation" = "service=rents branch=North"\n\n'
                "End of settings\n")
            self.run("generate", "--all-branches", "--template", "Rent review", "--all", "--queue")
            self.run("work", "--until-done")
            code = "the code \"<<Rent Paid Too>>\" was not filled in; did you mean \"Rent Paid To\"?"
            statement(f"""update queue.run set state = 'open', destination = 'email';
                update queue.letter set state = 'sending', detail = 'no answer to the letter from '
                    'mail.example.test' where number = 3 and branch = 1;
                update queue.letter set state = 'held', detail = '{code}' where number in (4, 9);
                update queue.letter set state = 'no address', detail = 'no e-mail address'
                    where number = 6;
                update queue.letter set place = 'ready' where number > 12 and branch = 2;
                update queue.part set reason = 'the mail server refuses the login',
                    paused_until = now() + interval '1 hour' where branch = 2""")
            worker = subprocess.Popen([self.program, "work"], stderr=subprocess.DEVNULL,
                                      env={**self.environment, "QT_QPA_PLATFORM": "offscreen"})
            wait_for("a worker", lambda: statement(
                "select count(*) from queue.worker where ended is null") == "1")
            self.start()
            self.keys("alt+t", "q")
            window = self.window("Queue of Letters")
            self.keys("Home", "Down", "Down")
            self.take("queue", window)
            self.keys("Escape")
            self.until_gone(window)
        finally:
            if worker is not None:
                worker.terminate()
                worker.wait()
            subprocess.run([ROOT / "scripts/private_postgres.sh", "stop", database], check=True)

    def dialog_of(self, name, title):
        """A dialog that comes by itself."""
        window = self.window(title)
        self.take(name, window)
        self.keys("Escape")
        self.until_gone(window)

    def window_of(self, window):
        self.xdotool("windowfocus", "--sync", window)

    def scheme(self, number):
        """Tools, Colour Scheme, the scheme of this number."""
        self.window_of(self.main)
        self.keys("alt+t", "Up", "Right", *["Down"] * number, "Return")
        if SCHEMES[number] == "Custom":
            self.answer("Custom Colours", "Return")


def main():
    # The folder is shown in some windows, so its name is the same each time.
    with Studio(ROOT / "build/release/tenora", "1280x800",
                "/tmp/tenora") as studio:
        for file in studio.home.glob("*/*.rtf"):
            os.utime(file, (SAVED, SAVED))
        studio.start()
        studio.keys("ctrl+shift+f")
        studio.type("Welcome")
        studio.keys("Return", "Return", "ctrl+shift+f", "Escape")
        # The caret out of the way, into the letter's first line.
        studio.click(studio.main, 700, 250)
        studio.take("main-window")
        for number, scheme in enumerate(SCHEMES):
            studio.scheme(number)
            studio.take(f"scheme-{scheme.lower()}", width=640)
        studio.scheme(0)
        studio.find_and_replace()
        studio.keys("ctrl+shift+f", "ctrl+a")
        studio.type("Inspection notice")
        studio.keys("Return", "Return", "ctrl+shift+f", "ctrl+a", "Delete", "Escape", "F9")
        studio.window("Answers for the Preview")
        studio.type("Kahu Ngata")
        studio.keys("Return")
        studio.window_of(studio.main)
        studio.keys("alt+Next", "alt+Next")
        studio.take("template-preview")
        studio.keys("Escape", "ctrl+w")
        studio.dialog("settings", "Settings", "alt+f", "e")
        studio.dialog("margins", "Page Margins", "alt+f", "u")
        studio.dialog("receipt-options", "Receipt Options", "alt+f", "r")
        studio.dialog("about", "About", "alt+h", "a")
        studio.window_of(studio.main)
        studio.keys("ctrl+g")
        window = studio.window("Generate Letters")
        studio.type("Young")
        studio.keys("Tab", "space", "Down", "space")
        studio.take("generate", window)
        studio.keys("shift+Tab", "ctrl+a", "BackSpace", "shift+Tab", "space", "Tab", "Tab")
        studio.type("4000")
        studio.keys("alt+a")
        studio.take("generate-filter", window)
        studio.keys("Escape")
        studio.until_gone(window)
        studio.window_of(studio.main)
        studio.keys("ctrl+Home")
        studio.type("Pleese read this. ")
        studio.dialog("spelling", "Spell Check", "F7")
        studio.window_of(studio.main)
        studio.keys("ctrl+z")
        studio.unfinished_run()
        studio.keys("alt+t", "u")
        runs = studio.window("Unfinished Runs")
        studio.take("unfinished-runs", runs)
        studio.keys("alt+l")
        window = studio.window("Letters Left")
        studio.keys("Down", "space", "Down", "Down", "space")
        studio.take("letters-left", window)
        studio.keys("Escape")
        studio.until_gone(window)
        studio.window_of(runs)
        studio.keys("Escape")
        studio.until_gone(runs)
        studio.window_of(studio.main)
        # "Future Date" is the last of the Insert menu's codes.
        studio.dialog("future-date", "Future Date", "alt+i", "Right", "Up", "Return")
        studio.dialog("preview", "Welcome.*Print Preview", "ctrl+shift+p")
        studio.unsaved_letters()
    with Studio(ROOT / "build/release/tenora", "1280x800") as studio:
        studio.queue()


main()

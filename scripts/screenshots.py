#!/usr/bin/python3
"""Makes the pictures of docs/pictures anew, each window from the built program on its own screen.

Needs ImageMagick beside what the tests need. Run it after the release build and look at the result.
"""
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/support"))
from screen import Screen, wait_for

PICTURES = ROOT / "docs/pictures"
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
        window = self.window(title)
        self.take(name, window)
        self.keys("Escape")
        self.until_gone(window)

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


main()

"""A screen of its own with the built program on it, driven by mouse and keys as a person would.

Nothing here sleeps for luck: every step waits for what a person would wait for, a window or a file.
"""
import os
import pathlib
import shutil
import subprocess
import tempfile
import time

LIMIT = 30  # seconds until a step that does not come about has failed
SOURCE = pathlib.Path(__file__).resolve().parents[2]
MAIN = "Tenora Mail Merge Facility"


def missing():
    """The programs that are needed and not installed."""
    return [name for name in ("Xvfb", "xdotool", "xwininfo") if shutil.which(name) is None]


def wait_for(what, condition):
    """The first truthy answer of the condition; TimeoutError where it does not come in time."""
    end = time.monotonic() + LIMIT
    while not (answer := condition()):
        if time.monotonic() > end:
            raise TimeoutError(f"waited {LIMIT} s in vain for {what}")
        time.sleep(0.02)
    return answer


class Screen:
    """An X server without a window manager, and a scratch agency. Use it with `with`.

    `folder` is new and goes at the end; without a name it gets one of its own.
    """

    def __init__(self, program, size="1400x900", folder=None):
        self.program = program
        if folder:
            os.mkdir(folder)
        self.folder = pathlib.Path(folder or tempfile.mkdtemp(prefix="tenora-screen-"))
        self.home = self.folder / "agency"
        shutil.copytree(SOURCE / "examples/agency", self.home)
        (self.home / "settings").mkdir()
        reader, writer = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writer), "-screen", "0", f"{size}x24", "-nolisten", "tcp",
             "-noreset"],
            pass_fds=[writer], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start")
        self.environment = {
            **os.environ, "DISPLAY": f":{number}", "QT_QPA_PLATFORM": "xcb", "LC_ALL": "en_NZ.UTF-8",
            "TENORA_HOME": str(self.home), "TENORA_SETTINGS": str(self.home / "settings"),
            "TENORA_NOW": "2026-11-21 09:30:00", "TENORA_PDF": str(self.home / "Printed"),
            "TENORA_PRINTER": "Print to PDF", "CUPS_SERVER": "127.0.0.1:9",
            "XDG_CONFIG_HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.folder),
            "XDG_STATE_HOME": str(self.folder / "state"),
            # The desktop's message bus library leaves its last kilobyte to the process's end.
            "QT_ACCESSIBILITY": "0", "ASAN_OPTIONS": "detect_leaks=0"}
        self.running = None
        self.main = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in (self.running, self.server):
            if process is not None and process.poll() is None:
                process.terminate()
                process.wait()
        shutil.rmtree(self.folder)

    def run(self, *arguments):
        """What one of the program's commands prints."""
        return subprocess.run([self.program, *arguments], env=self.environment, check=True,
                              capture_output=True, text=True).stdout

    def start(self, answer=None):
        """Starts the windows; returns when the main window can be used.

        `answer` answers what the program asks in place of showing the template forms.
        """
        with (self.folder / "errors").open("a") as errors:
            self.running = subprocess.Popen([self.program], env=self.environment, stderr=errors)
        self.main = None
        if answer:
            answer()
        else:
            self.close("Template Forms")
        self.main = self.window(MAIN)

    def xdotool(self, *arguments):
        done = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return done.stdout.split()

    def find(self, title):
        """The visible window whose title begins so, or None; the main window's ends so."""
        if title == MAIN and self.main:
            return self.main
        form = f"{title}$" if title == MAIN else f"^{title}"
        for window in self.xdotool("search", "--onlyvisible", "--name", form):
            if self.xdotool("getwindowgeometry", window):
                return window
        return None

    def window(self, title):
        """Waits for the window and gives it the keyboard."""
        window = wait_for(f"the window '{title}'", lambda: self.find(title))
        self.xdotool("windowfocus", "--sync", window)
        return window

    def until_gone(self, window):
        wait_for("a window's end",
                 lambda: window not in self.xdotool("search", "--onlyvisible", "--name", "."))

    def keys(self, *keys):
        self.xdotool("key", "--clearmodifiers", "--delay", 5, *keys)

    def type(self, text):
        self.xdotool("type", "--clearmodifiers", "--delay", 5, text)

    def answer(self, title, *keys, text=None):
        """Types into a dialog, presses keys, and waits until it has gone."""
        window = self.window(title)
        if text is not None:
            self.keys("ctrl+a")
            self.type(text)
        self.keys(*keys)
        self.until_gone(window)

    def box(self):
        """Waits for a box that bears the program's own name, and gives it the keyboard."""
        named = lambda: self.xdotool("search", "--onlyvisible", "--name", f"^{MAIN}")
        window = wait_for("a box", lambda: next((w for w in named() if w != self.main), None))
        self.xdotool("windowfocus", "--sync", window)
        return window

    def answer_box(self, text):
        window = self.box()
        self.type(text)
        self.keys("Return")
        self.until_gone(window)

    def close(self, title):
        self.answer(title, "Escape")

    def click(self, window, x, y, times=1):
        self.xdotool("mousemove", "--window", window, x, y, "click", "--repeat", times,
                     "--delay", 50, 1)

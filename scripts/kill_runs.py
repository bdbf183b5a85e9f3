#!/usr/bin/python3
"""Kills runs of letters hundreds of times and looks for anybody who got two letters, or none.

Usage: kill_runs.py PROGRAM [--kills N] [--seed N] [--to folder|pdf|cups|email ...]

Each trial begins a run for every tenant of the example agency and kills it: at a random moment, or
at a random step of its log (with kill_at_log_step.so, which is built beside the program). It is
resumed from the command line or from the window, and often killed there too, until it ends by
itself. Then what the printers, the mail server and the folders have is counted. Among the tenants
are some without an address, one whom the mail server refuses, and one whose letter is held.
Ends with 1 where anything is amiss, and with 77 (skipped) where there is no X server to be had.
"""
import argparse
import collections
import contextlib
import email
import email.policy
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/support"))
import screen
from mail_server import MailServer
from screen import MAIN, wait_for

NOTE = r"{\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0 Liberation Sans;}}\f0 Letter of <<Tenant Code>>" \
       r" <<ID Number>>\par}"
HELD, REFUSED = "T00003", "T00005"
DESTINATIONS = {"folder": "folder", "pdf": "printer", "cups": "printer", "email": "email"}
HANDED_OVER = {"folder": "saved", "printer": "printed", "email": "mailed"}
IN_DOUBT = ("printing", "sending")
MOST_KILLS = 4  # of one run


class CountingMailServer(MailServer):
    def forget(self):
        # The server goes on counting, so its next files have other names.
        for file in self.folder.glob("*.eml"):
            file.unlink()

    def texts(self):
        for file in self.folder.glob("*.eml"):
            message = email.message_from_bytes(file.read_bytes(), policy=email.policy.default)
            yield message.get_body(("plain",)).get_content()


class PrintServer:
    """cupsd in a folder of its own; its printer "Office" keeps what it is sent."""

    def __init__(self, folder):
        self.folder, self.socket = folder, folder / "cups.sock"
        for name in ("spool", "cache", "state", "jobs", "programs/backend"):
            (folder / name).mkdir(parents=True)
        for part in pathlib.Path("/usr/lib/cups").iterdir():
            if part.name != "backend":
                (folder / "programs" / part.name).symlink_to(part)
        backend = folder / "programs/backend/folder"
        backend.write_text('#!/bin/sh\n[ $# -eq 0 ] && exit 0\n'
                           f'cat ${{6:+"$6"}} > "{folder}/jobs/$1.pdf"\n')
        backend.chmod(0o700)  # the server runs it as itself only if nobody else may
        logs = "".join(f"{log} {folder}/log\n" for log in ("ErrorLog", "AccessLog", "PageLog"))
        (folder / "cups-files.conf").write_text(
            f"ServerRoot {folder}\nStateDir {folder}/state\n{logs}RequestRoot {folder}/spool\n"
            f"TempDir {folder}/spool\nCacheDir {folder}/cache\nServerBin {folder}/programs\n")
        (folder / "cupsd.conf").write_text(
            f"Listen {self.socket}\nBrowsing Off\nWebInterface No\n<Location />\nOrder allow,deny\n"
            "Allow all\n</Location>\n<Policy default>\n<Limit All>\nOrder deny,allow\nAllow all\n"
            "</Limit>\n</Policy>\n")
        (folder / "printers.conf").write_text(
            "<DefaultPrinter Office>\nDeviceURI folder:/jobs\nState Idle\nAccepting Yes\n"
            "</DefaultPrinter>\n")
        self.process = subprocess.Popen(
            ["/usr/sbin/cupsd", "-f", "-c", folder / "cupsd.conf", "-s", folder / "cups-files.conf"],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait_for("the print server", lambda: self.lpstat("-r"))

    def lpstat(self, *arguments):
        return subprocess.run(["lpstat", "-h", self.socket, *arguments], stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL).stdout

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()

    def wait(self):
        wait_for("the print jobs", lambda: not self.lpstat("-W", "not-completed", "-o"))

    def forget(self):
        self.wait()
        for file in (self.folder / "jobs").iterdir():
            file.unlink()


def pdf_texts(folder):
    for file in folder.glob("*.pdf"):
        yield subprocess.run(["pdftotext", file, "-"], capture_output=True, text=True,
                             check=True).stdout


def codes(texts):
    return collections.Counter(
        code for text in texts for code in re.findall(r"Letter of (T\d+)", text))


class Log:
    """What a run log says, as far as a kill let it be written."""

    def __init__(self, file):
        text = file.read_text("utf-8") if file and file.exists() else ""
        whole, _, self.cut = text.rpartition("\n")
        lines = [line.split("\t") for line in whole.split("\n")] if whole else []
        self.last = lines[-1][0] if lines else "(no log)"
        self.begun = ["letters"] in lines
        self.codes = {line[1]: line[3] for line in lines if line[0] == "recipient"}
        self.names = {line[3]: line[2] for line in lines if line[0] == "recipient"}
        self.states = {}
        for state, number, *_ in lines[lines.index(["letters"]) + 1:] if self.begun else ():
            if number in self.codes:
                self.states[self.codes[number]] = state

    def step(self):
        return f"in the middle after {self.last}" if self.cut else f"after {self.last}"


class Trials:
    def __init__(self, shown, mail, printer, seed):
        self.shown, self.mail, self.printer = shown, mail, printer
        self.random = random.Random(seed)
        self.home = shown.home
        self.mine = [entry.name for entry in self.home.iterdir()]
        self.no_address = set(shown.run(
            "query", str(self.home / "property.mdb"),
            "select reference from tenancy where email is null or email = ''").split())
        self.seconds, self.steps = {}, {}
        self.kills = collections.Counter()
        self.resumed = collections.Counter()
        self.outcomes = collections.Counter()
        self.swept = self.trials = 0
        self.said, self.status, self.took = "", 0, 0.0  # of the last command
        self.faults = []

    # What a trial needs and leaves.

    def environment(self, to, step=None):
        result = {**self.shown.environment}
        if to == "cups":
            result.update(CUPS_SERVER=str(self.printer.socket), TENORA_PRINTER="Office")
        if step:
            library = pathlib.Path(self.shown.program).parent / "kill_at_log_step.so"
            result.update(LD_PRELOAD=str(library), KILL_AT=str(step),
                          ASAN_OPTIONS="verify_asan_link_order=0")
        return result

    def clear(self):
        for entry in self.home.iterdir():
            if entry.name not in self.mine:
                shutil.rmtree(entry) if entry.is_dir() else entry.unlink()
        self.mail.forget()
        if self.printer:
            self.printer.forget()

    def log_file(self):
        return next(self.home.glob("Letters *.log"), None)

    def handed_over(self, to):
        if to == "email":
            return codes(self.mail.texts())
        if to == "cups":
            self.printer.wait()
            return codes(pdf_texts(self.printer.folder / "jobs"))
        return codes(pdf_texts(self.home / "Printed"))

    def letters(self):
        return codes(file.read_text("latin-1") for file in self.home.glob("*/Note.rtf")) + codes(
            file.read_text("latin-1") for file in self.home.glob("*/Note(*).rtf"))

    # The ways a run goes on. Each returns whether the program was killed.

    def command_line(self, to, log, plan):
        line = [self.shown.program, "generate"]
        line += ["--resume", str(log)] if log else [
            "--template", "Note", "--to", DESTINATIONS[to], "--all",
            *(["--subject", "Rent"] if to == "email" else [])]
        began = time.monotonic()
        process = subprocess.Popen(line, env=self.environment(to, plan.get("step")), text=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.PIPE)
        self.kill_after(process, plan.get("seconds"))
        self.said = process.communicate()[1]
        self.status = process.returncode
        self.took = time.monotonic() - began
        return process.returncode == -signal.SIGKILL

    @staticmethod
    def kill_after(process, seconds):
        if seconds is None:
            return
        def kill():
            with contextlib.suppress(ProcessLookupError):
                process.kill()
        timer = threading.Timer(seconds, kill)
        timer.daemon = True
        timer.start()

    def window(self, to, log, plan):
        """Through the dialog at the start, or Tools > Unfinished Runs."""
        shown = self.shown
        with (shown.folder / "errors").open("a") as errors:
            process = subprocess.Popen([shown.program], stderr=errors,
                                       env=self.environment(to, plan.get("step")))
        ended = lambda: process.poll() is not None
        if self.random.random() < 0.5:
            self.wait_for_window("Unfinished Runs", ended, "Escape")
            wait_for("the dialog's end", lambda: ended() or not shown.find("Unfinished Runs"))
            self.wait_for_window(MAIN, ended, "alt+t", "u")
        self.wait_for_window("Unfinished Runs", ended)
        # Before a box can come that has the same title.
        main = wait_for("the main window", lambda: ended() or shown.find(MAIN))
        self.kill_after(process, plan.get("seconds"))
        shown.keys("alt+r")

        def all_done():
            if ended() or Log(log).last == "complete" or shown.find("Letters Left"):
                return True
            for title in MAIN, "frm":  # the box about the address that the server refuses
                for box in shown.xdotool("search", "--onlyvisible", "--name", f"^{title}"):
                    if box != main:
                        self.press(box, "Return")
            return False
        wait_for("the run's end in the window", all_done)
        killed = ended()
        process.kill()
        process.wait()
        return killed

    def wait_for_window(self, title, ended, *keys):
        """Presses the keys there, unless the program ends first."""
        window = wait_for(f"the window '{title}'", lambda: ended() or self.shown.find(title))
        if window is not True:
            self.press(window, *keys)

    def press(self, window, *keys):
        self.shown.xdotool("windowfocus", "--sync", window)
        if keys:
            self.shown.keys(*keys)

    # A run from its beginning until it ends by itself.

    def plan(self, to, part=1.0):
        """When to kill; half at a step of the log, half at a moment."""
        if self.random.random() < 0.5:
            return {"step": self.random.randint(1, max(1, int(self.steps[to] * part)))}
        return {"seconds": self.random.uniform(0, self.seconds[to] * part)}

    def measure(self, to):
        """How long an undisturbed run takes, and the steps of its log."""
        for _ in range(2):  # the first one waits for what the system has not read yet
            self.clear()
            self.command_line(to, None, {})
        self.seconds[to] = self.took
        self.judge(to, ["undisturbed"])
        low, high = 0, 1024
        while low < high:
            middle = (low + high + 1) // 2
            self.clear()
            if self.command_line(to, None, {"step": middle}):
                low = middle
            else:
                high = middle - 1
        self.steps[to] = low

    def trial(self, to):
        self.trials += 1
        self.clear()
        plan, log, way = self.plan(to), None, self.command_line
        told = []
        while True:
            killed = way(to, log, plan)
            log = self.log_file()
            state = Log(log)
            told.append(f"{way.__name__} {plan} -> {'killed ' + state.step() if killed else 'ended'}")
            if not killed:
                break
            self.kills[to, state.step()] += 1
            way = self.command_line
            if not state.begun:
                self.expect(not self.letters() and not self.handed_over(to), "begun without a log",
                            told)
                if log:
                    self.command_line(to, log, {})
                    self.expect("nothing of that run was done" in self.said and self.status == 1,
                                self.said, told)
                    log.unlink()
                log = None
            elif self.random.random() < 0.5:
                way = self.window
            self.resumed[to, way.__name__ if log else "begun again"] += 1
            again = len(told) < MOST_KILLS and self.random.random() < 0.6
            plan = self.plan(to, 0.6) if again else {}
        self.judge(to, told)

    def expect(self, holds, what, told):
        if not holds:
            self.faults.append(f"{what}\n    " + "\n    ".join([*told]))

    def judge(self, to, told):
        told = [to, *told]
        leftovers = list(self.shown.folder.rglob(".tenora-*"))
        for file in leftovers:
            os.utime(file, (0, 0))
        handed, letters, log = self.handed_over(to), self.letters(), self.log_file()
        # Once more: nothing further may leave, and what is left is named.
        self.command_line(to, log, {})
        again, state = self.handed_over(to), Log(log)
        self.expect(handed == again, f"handed over by one more --resume: {again - handed}", told)
        self.swept += len(leftovers)
        self.expect(not any(file.exists() for file in leftovers), f"not swept: {leftovers}", told)
        done = HANDED_OVER[DESTINATIONS[to]]
        left = {"held": {HELD}, "no address": self.no_address, "failed": {REFUSED}}
        unfinished = self.shown.run("generate", "--unfinished")
        all_done = True
        for code, name in state.names.items():
            ended = state.states.get(code, "not begun")
            self.outcomes[to, ended] += 1
            all_done = all_done and ended == done
            if ended == done:
                wanted = (0,) if to == "folder" else (1,)
            elif ended in IN_DOUBT:
                wanted = (0, 1)
            else:
                wanted = (0,)
                self.expect(code in left.get(ended, ()), f"{code} is {ended}", told)
            self.expect(handed[code] in wanted, f"{code}, {ended}, left {handed[code]} times", told)
            self.expect(letters[code] == 1, f"{letters[code]} letters of {code}, {ended}", told)
            named = f"{name} ({code})" in self.said and f"{name} ({code})" in unfinished
            self.expect(named or ended == done, f"{code} is {ended} and nobody is told", told)
        self.expect(self.status == (0 if all_done else 1), f"status {self.status}", told)
        self.expect(all_done == (not unfinished), "listed though done, or not listed", told)

    def report(self):
        print(f"\nSteps of a log: {self.steps}; seconds: " +
              ", ".join(f"{to} {seconds:.2f}" for to, seconds in self.seconds.items()))
        print(f"{self.trials} runs, {sum(self.kills.values())} kills; resumed:")
        for (to, way), count in sorted(self.resumed.items()):
            print(f"  {to:8}{way:14}{count:5}")
        print("Killed:")
        for (to, step), count in sorted(self.kills.items()):
            print(f"  {to:8}{step:34}{count:5}")
        print("Letters at the end:")
        for (to, state), count in sorted(self.outcomes.items()):
            print(f"  {to:8}{state:14}{count:7}")
        print(f"{self.swept} unfinished files swept. {len(self.faults)} faults.")
        for fault in self.faults:
            print("FAULT: " + fault)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--to", nargs="+", choices=DESTINATIONS, default=list(DESTINATIONS))
    options = parser.parse_args()
    if screen.missing():
        print("skipped: not installed: " + " ".join(screen.missing()))
        return 77
    with contextlib.ExitStack() as stack:
        shown = stack.enter_context(screen.Screen(os.path.abspath(options.program)))
        scratch = shown.folder / "scratch"
        scratch.mkdir()
        shown.environment["TMPDIR"] = str(scratch)
        mail = stack.enter_context(CountingMailServer(
            shown.folder / "mail", f"refuse=tenant{int(REFUSED[1:])}@example.test"))
        printer = None
        if "cups" in options.to:
            printer = stack.enter_context(PrintServer(shown.folder / "cups"))
        (shown.home / "Templates/Note.rtf").write_text(NOTE)
        for change in (f"options set SmtpSend=True, SmtpPort={mail.stored_port}",
                       f"tenancy set id_number='ID }} 7' where reference='{HELD}'"):
            shown.run("query", "--write", str(shown.home / "property.mdb"), "update " + change)
        trials = Trials(shown, mail, printer, options.seed)
        for to in options.to:
            trials.measure(to)
        while sum(trials.kills.values()) < options.kills:
            for to in options.to:
                trials.trial(to)
            print(f"\r{sum(trials.kills.values())} kills, {len(trials.faults)} faults", end="",
                  flush=True, file=sys.stderr)
        trials.report()
    return 1 if trials.faults else 0


if __name__ == "__main__":
    sys.exit(main())

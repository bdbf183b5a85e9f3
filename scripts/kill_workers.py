#!/usr/bin/python3
"""Kills workers of a queue hundreds of times and looks for anybody who got two letters.

Usage: kill_workers.py PROGRAM [--kills N] [--stops N] [--crashes N] [--workers N] [--seed N]

Runs for every tenant of two branches are put into the queue of a private PostgreSQL server. Workers
mail them to a server that keeps every message, or, every third run, save them. Each worker is killed at a random moment or
at a random message to or from a server (with kill_at_message.so, which is built beside the
program), and another one takes its place. Some are stopped instead until their letters have been
given to others, and then go on; and the database is crashed and started again. At the end workers
that nobody kills do what is left, and what was mailed and saved is compared with what the queue
says.
Ends with 1 where anything is amiss, and with 77 (skipped) where PostgreSQL is not installed.
"""
import argparse
import collections
import contextlib
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/support"))
from mail_server import MailServer
from screen import wait_for

NOTE = r"{\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0 Liberation Sans;}}\f0 Letter of <<Tenant Code>>" \
       r" <<ID Number>>\par}"
HELD, REFUSED, NOWHERE = "T00003", "T00005", "T00007"
BRANCHES = "North", "South"
ENOUGH = 60  # letters that are to be in the queue while workers are killed
SETTINGS = r"""Tenora settings, version 1

[SOFTWARE\Tenora\Settings]
"Networkable" = "1"
"DatabaseLocation" = "service=rents branch=North"

End of settings
"""


class Office:
    """A server with two branches, which have other addresses, and a data folder."""

    def __init__(self, program, folder, mail):
        self.program, self.folder, self.mail = program, folder, mail
        self.home = folder / "agency"
        self.cluster = self.script("start")
        services = folder / "services"
        services.write_text("".join(
            f"[{name}]\nhost={self.cluster}\ndbname=rents\nuser={login}\n"
            for name, login in (("rents", "tenora"), ("worker", "w1"))))
        self.environment = {**os.environ, "TENORA_HOME": str(self.home), "PGSERVICEFILE": str(services),
                            "TENORA_SETTINGS": str(folder / "settings"),
                            "TENORA_NOW": "2026-11-21 09:30:00", "QT_QPA_PLATFORM": "offscreen"}
        shutil.copytree(ROOT / "examples/agency", self.home)
        (self.home / "Templates/Note.rtf").write_text(NOTE)
        (folder / "settings").mkdir()
        (folder / "settings/machine.settings").write_text(SETTINGS)
        self.sql("create database rents", "postgres")
        self.run("server", "init", "rents")
        for branch in BRANCHES:
            file = folder / f"{branch}.mdb"
            shutil.copy(self.home / "property.mdb", file)
            for change in (f"options set SmtpSend=True, SmtpPort={mail.stored_port}",
                           f"tenancy set email=reference & '@{branch.lower()}.test'",
                           f"tenancy set id_number='ID }} 7' where reference='{HELD}'",
                           f"tenancy set email='' where reference='{NOWHERE}'"):
                self.run("query", "--write", str(file), "update " + change)
            self.run("server", "import", str(file), "--branch", branch, "--service", "rents")
        self.sql("create role w1 login in role tenora_worker;"
                 "insert into rental.may_see select 'w1', id from rental.branch;"
                 "update queue.pause set wait = '200 ms'")
        self.runs = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.script("stop", self.cluster)

    def script(self, *arguments):
        return subprocess.run([ROOT / "scripts/private_postgres.sh", *arguments], check=True,
                              stdout=subprocess.PIPE, text=True).stdout.strip()

    def crash(self):
        self.script("restart", self.cluster)

    def run(self, *arguments):
        done = subprocess.run([self.program, *arguments], env=self.environment, capture_output=True,
                              text=True, check=False)
        if done.returncode != 0 and arguments[:2] != ("server", "import"):
            raise RuntimeError(f"{arguments}: {done.stdout}{done.stderr}")
        return done.stdout

    def sql(self, text, database="rents"):
        done = subprocess.run(["psql", "-XAtq", "-v", "ON_ERROR_STOP=1", "-h", self.cluster, "-U",
                               "tenora", database], input=text, capture_output=True, text=True,
                              check=True)
        return [line.split("|") for line in done.stdout.splitlines()]

    def queue(self):
        self.runs += 1
        to = ("--to", "email", "--subject", f"Note {self.runs}") if self.runs % 3 else ()
        self.run("generate", "--all-branches", "--template", "Note", *to, "--all", "--queue")

    def left(self):
        return int(self.sql("select count(*) from queue.letter where place in ('ready', 'leased', "
                            "'later')")[0][0])

    def mailed(self):
        """How often each address got each subject."""
        count = collections.Counter()
        for file in self.mail.folder.glob("*.envelope"):
            address = file.read_text().splitlines()[-1].lower()
            subject = re.search(rb"(?m)^Subject: (.*?)\r?$", file.with_suffix(".eml").read_bytes())
            count[subject[1].decode(), address] += 1
        return count


class Worker:
    def __init__(self, office, chance, steps, lease):
        environment = dict(office.environment)
        self.end, self.plan = None, "lives"
        if chance is not None and chance.random() < 0.6:
            step = chance.randrange(1, steps)
            environment.update(KILL_AT=str(step), LD_PRELOAD=str(
                pathlib.Path(office.program).parent / "kill_at_message.so"))
            self.plan = "step"
        elif chance is not None:
            self.end = time.monotonic() + chance.uniform(0.2, 2.0)
            self.plan = "moment"
        self.log = open(office.folder / "workers.log", "a")
        self.process = subprocess.Popen(
            [office.program, "work", "--service", "worker", "--lease", str(lease),
             "--until-done"], env=environment, stdout=subprocess.DEVNULL, stderr=self.log)

    def ended(self):
        """None while it runs, else whether it was killed."""
        if self.end and time.monotonic() > self.end:
            self.process.kill()
        status = self.process.poll()
        if status is None:
            return None
        self.log.close()
        return status == -signal.SIGKILL


class Trials:
    def __init__(self, office, options):
        self.office, self.options = office, options
        self.random = random.Random(options.seed)
        self.kills = collections.Counter()
        self.stops = self.crashes = 0
        self.files = self.strays = 0
        self.faults = []

    def kill(self):
        workers = []
        while sum(self.kills.values()) < self.options.kills:
            if self.office.left() < ENOUGH:
                self.office.queue()
            workers += [Worker(self.office, self.random, self.options.steps, 300)
                        for _ in range(self.options.workers - len(workers))]
            for worker in list(workers):
                killed = worker.ended()
                if killed is not None:
                    workers.remove(worker)
                    self.kills[worker.plan] += killed
                    if not killed and worker.process.returncode != 0:
                        self.faults.append(f"a worker ended with {worker.process.returncode}")
            kills = sum(self.kills.values())
            if self.crashes < self.options.crashes and (
                    kills >= (self.crashes + 1) * self.options.kills / (self.options.crashes + 1)):
                self.crashes += 1
                self.office.crash()
            print(f"\r{kills} kills", end="", flush=True, file=sys.stderr)
            time.sleep(0.02)
        for worker in workers:
            worker.process.kill()
            worker.process.wait()

    def stop(self):
        """Workers that stand still until their letters are in other hands."""
        stopped = []
        while self.stops < self.options.stops:
            if self.office.left() < ENOUGH:
                self.office.queue()
            first, second = (Worker(self.office, None, 0, 1) for _ in range(2))
            pid = first.process.pid
            wait_for("letters in hand", lambda: first.process.poll() is not None or self.leases(pid))
            time.sleep(self.random.uniform(0, 0.3))
            if first.process.poll() is None and (leases := self.leases(pid)):
                first.process.send_signal(signal.SIGSTOP)
                wait_for("the lease to be over", lambda: not set(leases) & set(self.leases(pid)))
                first.process.send_signal(signal.SIGCONT)
                self.stops += 1
            for worker in (first, second):
                stopped.append(worker.process.wait())
        self.faults += [f"a worker ended with {status}" for status in stopped if status != 0]

    def leases(self, pid):
        return [row[0] for row in self.office.sql(
            "select e.id from queue.lease e join queue.worker w on w.id = e.worker where w.pid = "
            f"{pid}")]

    def finish(self):
        workers = [Worker(self.office, None, 0, 300) for _ in range(self.options.workers)]
        for worker in workers:
            status = worker.process.wait(timeout=600)
            if status != 0:
                self.faults.append(f"a worker ended with {status}")

    def judge(self):
        mailed, outcomes = self.office.mailed(), collections.Counter()
        expected = {HELD: "held", REFUSED: "failed", NOWHERE: "no address"}
        counted, saved = 0, collections.Counter()
        for branch, to, subject, code, standing, file, detail in self.office.sql(
                "select b.name, r.destination, r.subject, l.code, l.standing, l.file, l.detail "
                "from queue.letter l join queue.run r on r.id = l.run "
                "join rental.branch b on b.id = l.branch"):
            path = self.office.home / "Branches" / branch / file
            branch = branch.lower()
            if file:
                saved[path] += 1
                if not path.is_file() or f"Letter of {code}" not in path.read_text("latin-1"):
                    self.faults.append(f"{path} is not the letter of {code}, {standing}")
            lost = standing == "failed" and detail.startswith("five workers were lost")
            outcomes[standing if not lost else "failed: five workers lost"] += 1
            times = mailed[subject, f"{code.lower()}@{branch}.test"]
            counted += times
            wanted = {"done": (1,), "in doubt": (0, 1)}.get(standing, (0,))
            if to == "folder":
                wanted = (0,)
            about = f"{subject}, {branch}, {code}: {standing} ({detail}), mailed {times} times"
            if times not in wanted:
                self.faults.append(about)
            usual = ("done",) if to == "folder" else ("done", "in doubt")
            if not lost and standing not in (*usual, expected.get(code)):
                self.faults.append("unexpected: " + about)
        if counted != sum(mailed.values()):
            self.faults.append("mails that are of no letter")
        self.faults += [f"{path} is of {count} letters" for path, count in saved.items() if count > 1]
        self.files = len(saved)
        self.strays = len({*self.office.home.glob("Branches/*/*/*.rtf")} - saved.keys())
        twice = {key: times for key, times in mailed.items() if times > 1}
        return mailed, outcomes, twice

    def report(self):
        mailed, outcomes, twice = self.judge()
        print(f"\n{sum(self.kills.values())} kills: {dict(self.kills)}; {self.stops} stops past the "
              f"lease; {self.crashes} crashes of the database; {self.office.runs} runs")
        print(f"{sum(mailed.values())} messages; {len(twice)} addresses got one twice")
        print(f"{self.files} files of letters, {self.strays} of none")
        for standing, count in sorted(outcomes.items()):
            print(f"  {standing:26}{count:7}")
        for fault in self.faults:
            print("FAULT: " + fault)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("--kills", type=int, default=200)
    parser.add_argument("--stops", type=int, default=4)
    parser.add_argument("--crashes", type=int, default=2)
    parser.add_argument("--workers", type=int, default=3)
    parser.add_argument("--steps", type=int, default=400, help="messages of which one kills a worker")
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    if not list(pathlib.Path("/usr/lib/postgresql").glob("*/bin/initdb")):
        print("skipped: PostgreSQL's server is not installed")
        return 77
    with contextlib.ExitStack() as stack:
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        mail = stack.enter_context(MailServer(
            folder / "mail", f"refuse={REFUSED}@north.test"))
        office = stack.enter_context(Office(os.path.abspath(options.program), folder, mail))
        trials = Trials(office, options)
        trials.kill()
        trials.stop()
        trials.finish()
        trials.report()
        if trials.faults:
            shutil.copy(folder / "workers.log", "kill_workers.log")
    return 1 if trials.faults else 0


if __name__ == "__main__":
    sys.exit(main())

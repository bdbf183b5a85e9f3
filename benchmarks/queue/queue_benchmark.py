#!/usr/bin/python3
"""Measures the queue of letters on a PostgreSQL server of its own that waits for its disk.

Usage: queue_benchmark.py PROGRAM DATABASE [--letters N] [--only alone|cost|mail]

alone  groups of 32 letters claimed and noted, by 1, 2 and 4 connections that make no letters: N of
       them (40,000), the tables' sizes before and after, and what the status costs
cost   the processor time of a letter, by a worker and by a run without the queue: every tenancy of
       DATABASE, on the server in both cases
mail   letters a second by 1, 2, 4 and 8 workers to a mail server that takes 20 ms for each
Ends with 77 (skipped) where no PostgreSQL server is installed.
"""
import argparse
import asyncio
import glob
import os
import pathlib
import resource
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
GROUP = 32
GOAL = 5000  # letters a second
MAIL_TIME = 0.020  # seconds

CLAIM_AND_NOTE = f"""
\\set worker :client_id + 1
select coalesce(max(run), 0) run, max(branch) branch, max(lease) lease,
  array_agg(number) numbers, count(*) letters from queue.claim(:worker, 1000, null, 0, 0, {GROUP}, 300) \\gset
\\if :run > 0
select count(*) from queue.note(:run, :branch, :lease, 300, ':numbers',
  array_fill('saved'::text, array[:letters]), array_fill('X/Y.rtf'::text, array[:letters]),
  array_fill('1 bytes'::text, array[:letters]), array_fill(''::text, array[:letters]),
  array_fill('out'::text, array[:letters]), true);
\\endif
"""


class Office:
    """A server with a branch that has the database's rows, and a folder for its letters."""

    def __init__(self, program, database):
        self.program = program
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="tenora-queue-"))
        cluster = subprocess.run([ROOT / "scripts/private_postgres.sh", "start"], text=True,
                                 env={**os.environ, "PRIVATE_POSTGRES_FSYNC": "on"},
                                 stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        if cluster.returncode != 0:
            print("skipped: PostgreSQL's server is not installed")
            sys.exit(77)
        self.cluster = cluster.stdout.strip()
        (self.folder / "settings").mkdir()
        shutil.copytree(ROOT / "examples/agency/Templates", self.folder / "Templates")
        (self.folder / "services").write_text(
            f"[bench]\nhost={self.cluster}\ndbname=bench\nuser=tenora\n")
        (self.folder / "settings/machine.settings").write_text(
            'Tenora settings, version 1\n\n[SOFTWARE\\Tenora\\Settings]\n"Networkable" = "1"\n'
            '"DatabaseLocation" = "service=bench branch=North"\n\nEnd of settings\n')
        self.environment = {**os.environ, "PGSERVICEFILE": str(self.folder / "services"),
                            "TENORA_HOME": str(self.folder),
                            "TENORA_SETTINGS": str(self.folder / "settings")}
        self.sql("create database bench", "postgres")
        self.tenora("server", "init", "bench")
        self.tenora("server", "import", database, "--branch", "North", "--service", "bench")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        subprocess.run([ROOT / "scripts/private_postgres.sh", "stop", self.cluster],
                       stderr=subprocess.DEVNULL)
        shutil.rmtree(self.folder)

    def sql(self, statements, database="bench"):
        return subprocess.run(["psql", "-XAtq", "-v", "ON_ERROR_STOP=1", "-h", self.cluster, "-U",
                               "tenora", "-d", database], input=statements, text=True, check=True,
                              stdout=subprocess.PIPE).stdout.strip()

    def tenora(self, *arguments):
        """Status 1 is for what was wrong with single letters or rows."""
        done = subprocess.run([self.program, *arguments], env=self.environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if done.returncode not in (0, 1):
            raise RuntimeError(f"tenora {arguments}: {done.stderr}")
        return done.stdout

    def put(self, template, *more):
        put = self.tenora("generate", "--branch", "North", "--template", template, "--queue", *more)
        if not put.startswith("Run "):
            raise RuntimeError(f"{template}: no letters were put into the queue")

    def letters(self):
        return int(self.sql("select coalesce(sum(done), 0) from queue.progress"))

    def server_seconds(self):
        """Processor time of the server's processes, those that have ended among them."""
        postmaster = pathlib.Path(self.postmaster()).read_text().split()
        ticks = sum(int(field) for field in postmaster[15:17])
        for stat in glob.glob("/proc/[0-9]*/stat"):
            try:
                fields = pathlib.Path(stat).read_text().rsplit(")", 1)[1].split()
            except (FileNotFoundError, ProcessLookupError):
                continue
            if fields[1] == postmaster[0] or stat == self.postmaster():
                ticks += int(fields[11]) + int(fields[12])
        return ticks / os.sysconf("SC_CLK_TCK")

    def postmaster(self):
        pid = self.sql("select pg_read_file('postmaster.pid')").split("\n")[0]
        return f"/proc/{pid}/stat"

    def cost(self, *arguments):
        """Processor seconds of a call of the program, and of the server's during it."""
        server, own = self.server_seconds(), resource.getrusage(resource.RUSAGE_CHILDREN)
        self.tenora(*arguments)
        time.sleep(0.2)  # its connections end
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return (after.ru_utime + after.ru_stime - own.ru_utime - own.ru_stime,
                self.server_seconds() - server)


def measure_alone(office, letters):
    print(f"The queue alone, groups of {GROUP}")
    for connections in (1, 2, 4):
        office.sql("delete from queue.run; delete from queue.worker;"
                   "alter table queue.worker alter id restart")
        office.sql("vacuum full queue.letter")
        office.sql(f"insert into queue.worker(host, pid, version) select 'bench', n, '1' "
                   f"from generate_series(1, {connections}) n")
        office.sql(
            "do $$ declare r int; begin r := queue.put_run(now()::timestamp, 1, 'x', 'Templates', 'x', "
            "'folder', '', '', false, '', '{}', '{}'); perform queue.put_letters(r, b.id, n.names, "
            "n.names, n.names) from rental.branch b, (select array_agg(n::text) names from "
            f"generate_series(1, {letters}) n) n; perform queue.open_run(r); end $$")
        before = sizes(office)
        (office.folder / "claim.sql").write_text(CLAIM_AND_NOTE)
        begin = time.time()
        groups = letters // connections // GROUP + 1
        done = subprocess.run(
            [pgbench(), "-n", "-h", office.cluster, "-U", "tenora", "-c", str(connections), "-j",
             str(connections), "-t", str(groups), "-f", office.folder / "claim.sql", "bench"],
            text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        rate = office.letters() / (time.time() - begin)
        if office.letters() != letters:
            print(f"  {office.letters()} of {letters} letters were done: {done.stderr[-300:]}")
        after = sizes(office)
        print(f"  {connections} connection(s): {rate:.0f} letters a second, {rate / GOAL:.2f} times the "
              f"goal; {before:.1f} MB before, {after:.1f} MB after")
    print("  updates that stayed on their page: " + office.sql(
        "select round(100.0 * n_tup_hot_upd / n_tup_upd) || ' %' from pg_stat_user_tables "
        "where schemaname = 'queue' and relname = 'letter'"))
    print("  status: " + office.sql("explain (analyze, timing off) select * from queue.progress")
          .split("\n")[-1].strip())


def sizes(office):
    return int(office.sql("select sum(pg_total_relation_size(oid)) from pg_class where "
                          "relnamespace = 'queue'::regnamespace and relkind = 'r'")) / 1e6


def pgbench():
    return shutil.which("pgbench") or sorted(glob.glob("/usr/lib/postgresql/*/bin/pgbench"))[-1]


def measure_cost(office):
    print("Processor a letter, ours and the server's")
    one = office.sql("select reference from rental.tenancy order by 1 limit 1")
    work = ("work", "--until-done", "--service", "bench")
    for template in ("Rent review", "Receipt", "Tenancy statement"):
        local = ("generate", "--branch", "North", "--template", template)
        begin = office.cost(*local, "--recipient", one)
        whole = office.cost(*local, "--all")
        office.put(template, "--recipient", one)
        worker_begin = office.cost(*work)
        before = office.letters()
        office.put(template, "--all")
        worker_whole = office.cost(*work)
        letters = office.letters() - before
        own = [(all_ - one_) * 1000 / letters for one_, all_ in zip(begin, whole)]
        queued = [(all_ - one_) * 1000 / letters for one_, all_ in zip(worker_begin, worker_whole)]
        print(f"  {template}, {letters} letters: {own[0]:.2f} + {own[1]:.2f} ms without the queue, "
              f"{queued[0]:.2f} + {queued[1]:.2f} ms by a worker: {queued[0] / own[0]:.2f} times as much")


def free_port():
    """The rental package keeps the port in a column that ends at 32767."""
    for port in range(20000, 32767):
        with socket.socket() as attempt:
            try:
                attempt.bind(("127.0.0.1", port))
                return port
            except OSError:
                continue
    raise RuntimeError("no port is free")


class SlowMailServer:
    """Takes every message, in its time."""

    def __init__(self):
        self.taken, started = 0, threading.Event()
        threading.Thread(target=lambda: asyncio.run(self.serve(started)), daemon=True).start()
        started.wait()

    async def serve(self, started):
        self.port = free_port()
        server = await asyncio.start_server(self.talk, "127.0.0.1", self.port)
        started.set()
        await server.serve_forever()

    @staticmethod
    async def line_of(reader):
        """Empty where the worker has gone."""
        try:
            return await reader.readline()
        except ConnectionResetError:
            return b""

    async def talk(self, reader, writer):
        answers = {b"EHLO": b"250 bench", b"DATA": b"354 go on", b"QUIT": b"221 bye"}
        writer.write(b"220 bench\r\n")
        while line := await self.line_of(reader):
            word = line[:4].upper()
            writer.write(answers.get(word, b"250 fine") + b"\r\n")
            if word == b"DATA":
                while await self.line_of(reader) not in (b".\r\n", b""):
                    pass
                await asyncio.sleep(MAIL_TIME)
                self.taken += 1
                writer.write(b"250 taken\r\n")
            await writer.drain()
        writer.close()


def measure_mail(office):
    print(f"Mail, {MAIL_TIME * 1000:.0f} ms a message")
    server = SlowMailServer()
    office.sql(f"update rental.options set smtpsend = true, smtpaddress = '127.0.0.1', smtpport = "
               f"{server.port}, smtpssl = false, smtpusername = '', smtppassword = '', "
               "smtpsender = 'office@bench.test';"
               "update rental.tenancy set email = lower(reference) || '@bench.test'")
    (office.folder / "Templates/Note.rtf").write_text(
        r"{\rtf1\ansi\deff0{\fonttbl{\f0 Liberation Sans;}}\f0 Letter of <<Tenant Code>>\par}")
    first = 0
    for workers in (1, 2, 4, 8):
        office.put("Note", "--to", "email", "--subject", "Note", "--all")
        before, begin = server.taken, time.time()
        office.tenora("work", "--until-done", "--service", "bench", "--workers", str(workers))
        rate = (server.taken - before) / (time.time() - begin)
        first = first or rate
        print(f"  {workers} worker(s): {server.taken - before} messages, {rate:.0f} a second, "
              f"{rate / first:.1f} times one worker's")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program", type=os.path.abspath)
    parser.add_argument("database", type=os.path.abspath)
    parser.add_argument("--letters", type=int, default=40000)
    parser.add_argument("--only", choices=("alone", "cost", "mail"))
    arguments = parser.parse_args()
    with Office(arguments.program, arguments.database) as office:
        if arguments.only in (None, "alone"):
            measure_alone(office, arguments.letters)
        if arguments.only in (None, "cost"):
            measure_cost(office)
        if arguments.only in (None, "mail"):
            measure_mail(office)


if __name__ == "__main__":
    main()

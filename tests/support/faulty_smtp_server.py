#!/usr/bin/python3
"""An SMTP server on loopback that misbehaves at one stage of the conversation.

Usage: faulty_smtp_server.py FOLDER ACTION-STAGE [after=N] [times=N]
The files in FOLDER are those of smtp_server.py. The stage is reached properly `after` times (0),
then misbehaves `times` times (always), then is proper again.

STAGE: connect, EHLO, AUTH, MAIL, RCPT, DATA, TEXT (behind the first line of a message), BODY (behind
its final "."; unless it is refused, the message is taken first).
ACTION:
  hangup, reset   the connection ends, in order or with a reset
  silent          no answer, whatever comes; at TEXT nothing more is read either
  late            the answer comes only when the client has sent something else
  slow            the answer comes after a moment
  refuse4/5       451 or 550 in place of the answer; the conversation goes on
  shutdown        421, and the connection ends
  surplus         another "250" follows the answer in the same packet
  quoting         the last line is refused in words that quote it, and the connection ends
"""
import asyncio
import pathlib
import socket
import struct
import sys

folder = pathlib.Path(sys.argv[1])
action, stage = sys.argv[2].split("-")
options = dict(argument.split("=", 1) for argument in sys.argv[3:])
first = int(options.get("after", 0)) + 1
last = first + int(options.get("times", 1_000_000)) - 1
REFUSALS = {"refuse4": b"451 4.3.0 try again later\r\n", "refuse5": b"550 5.7.1 not like this\r\n",
            "shutdown": b"421 4.3.2 shutting down\r\n"}
EHLO = b"250-faulty.test\r\n250 AUTH PLAIN\r\n" if stage == "AUTH" else b"250 faulty.test\r\n"


class Ended(Exception):
    pass


class Conversation:
    reached = 0
    taken = 0

    def __init__(self, reader, writer):
        self.reader, self.writer = reader, writer

    def due(self, point):
        if point != stage:
            return False
        Conversation.reached += 1
        return first <= Conversation.reached <= last

    async def line(self):
        line = await self.reader.readline()
        if not line:
            raise Ended
        return line

    async def answer(self, point, reply, request=b""):
        """Answers properly, or as the stage's fault has it. True when the request was refused."""
        if not self.due(point):
            self.writer.write(reply)
            return False
        if action == "reset":
            self.writer.get_extra_info("socket").setsockopt(
                socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            self.writer.transport.abort()
        if action in ("hangup", "reset"):
            raise Ended
        if action == "silent":
            if point == "TEXT":
                self.writer.transport.pause_reading()
                await asyncio.Event().wait()
            await self.reader.read()
            raise Ended
        if action == "late":
            next_line = await self.line()
            self.writer.write(reply)
            self.reader.feed_data(next_line)
        if action == "slow":
            await asyncio.sleep(0.2)
            self.writer.write(reply)
        if action == "surplus":
            self.writer.write(reply + b"250 2.0.0 one too many\r\n")
        if action == "quoting":
            self.writer.write(
                b"550-5.7.8 Unknown \xff\x1b[31m\r\n550 5.7.8 " + request.strip() + b"\r\n")
            await self.reader.readline()
            raise Ended
        if action in REFUSALS:
            self.writer.write(REFUSALS[action])
            if action == "shutdown":
                raise Ended
            return True
        return False

    async def message(self, envelope):
        lines = [await self.line()]
        refused = await self.answer("TEXT", b"")
        while (line := await self.line()) != b".\r\n":
            lines.append(line)
        if refused:
            return
        reply = b"250 2.0.0 taken\r\n"
        if stage != "BODY" or action not in REFUSALS or not self.will_be_due():
            Conversation.taken += 1
            (folder / f"{Conversation.taken}.envelope").write_bytes(b"\n".join(envelope))
            (folder / f"{Conversation.taken}.eml").write_bytes(b"".join(lines))
        await self.answer("BODY", reply)

    def will_be_due(self):
        return first <= Conversation.reached + 1 <= last

    async def run(self):
        await self.answer("connect", b"220 faulty.test\r\n")
        envelope = []
        while True:
            line = await self.line()
            word = line.split(b" ")[0].strip().upper().decode()
            if word == "AUTH":
                self.writer.write(b"334 \r\n")
                line = await self.line()
            if word == "QUIT":
                return
            if word == "MAIL":
                envelope = []
            reply = {"EHLO": EHLO, "DATA": b"354 go on\r\n"}.get(word, b"250 2.0.0 OK\r\n")
            if await self.answer(word, reply, line):
                continue
            if word in ("MAIL", "RCPT"):
                envelope.append(line[line.index(b"<") + 1:line.index(b">")])
            if word == "DATA":
                await self.message(envelope)


async def converse(reader, writer):
    with (folder / "connections").open("a") as log:
        log.write("connection\n")
    try:
        await Conversation(reader, writer).run()
    except (Ended, ConnectionError):
        pass
    writer.close()


async def main():
    server = await asyncio.start_server(converse, "127.0.0.1", 0)
    scratch = folder / "port.new"
    scratch.write_text(str(server.sockets[0].getsockname()[1]))
    scratch.rename(folder / "port")
    await asyncio.get_running_loop().run_in_executor(None, sys.stdin.read)


asyncio.run(main())

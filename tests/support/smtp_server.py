#!/usr/bin/python3
"""A real SMTP server on loopback for the tests.

Usage: smtp_server.py FOLDER MODE [option=value ...]
Writes the port it listens on to FOLDER/port, each message taken to FOLDER/1.eml, 2.eml, …, its
envelope beside it, and one line a connection to FOLDER/connections. Ends when its standard input
does.

MODE: plain, starttls, tls. Options: cert=FILE key=FILE, login=USER:PASSWORD, refuse=ADDRESS, port=N.
"""
import asyncio
import pathlib
import ssl
import sys

from aiosmtpd.smtp import SMTP, AuthResult

folder = pathlib.Path(sys.argv[1])
mode = sys.argv[2]
options = dict(argument.split("=", 1) for argument in sys.argv[3:])


class Handler:
    count = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if address == options.get("refuse"):
            return "550 5.1.1 no such mailbox here"
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        Handler.count += 1
        (folder / f"{Handler.count}.envelope").write_text(
            "\n".join([envelope.mail_from, *envelope.rcpt_tos]), "utf-8")
        (folder / f"{Handler.count}.eml").write_bytes(envelope.content)
        return "250 OK taken"


def authenticate(server, session, envelope, mechanism, data):
    user, password = options["login"].split(":")
    right = (data.login, data.password) == (user.encode(), password.encode())
    return AuthResult(success=right, handled=False)


def tls_context():
    if "cert" not in options:
        return None
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(options["cert"], options["key"])
    return context


def smtp_factory():
    with (folder / "connections").open("a") as log:
        log.write("connection\n")
    login = "login" in options
    return SMTP(Handler(), enable_SMTPUTF8=True,
                tls_context=tls_context() if mode == "starttls" else None,
                require_starttls=mode == "starttls",
                authenticator=authenticate if login else None,
                auth_required=login, auth_require_tls=False)


async def main():
    loop = asyncio.get_running_loop()
    server = await loop.create_server(smtp_factory, "127.0.0.1", int(options.get("port", 0)),
                                      ssl=tls_context() if mode == "tls" else None)
    port = server.sockets[0].getsockname()[1]
    scratch = folder / "port.new"
    scratch.write_text(str(port))
    scratch.rename(folder / "port")
    await loop.run_in_executor(None, sys.stdin.read)


asyncio.run(main())

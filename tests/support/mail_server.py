"""smtp_server.py on a free port of loopback, for tests that are scripts. Use it with `with`."""
import pathlib
import subprocess
import sys

from screen import wait_for


class MailServer:
    """The folder is made; the options are those of smtp_server.py."""

    def __init__(self, folder, *options):
        self.folder = folder
        folder.mkdir()
        self.process = subprocess.Popen(
            [sys.executable, pathlib.Path(__file__).with_name("smtp_server.py"), folder, "plain",
             *options],
            stdin=subprocess.PIPE)
        wait_for("the mail server", (folder / "port").exists)
        port = int((folder / "port").read_text())
        self.stored_port = port - 65536 if port > 32767 else port  # the column has 16 bits

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.communicate()

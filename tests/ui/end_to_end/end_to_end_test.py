#!/usr/bin/python3
"""A property manager's morning in the built program's windows, from a template to sent letters.

Usage: end_to_end_test.py PROGRAM. Ends with 77 (skipped) where there is no X server to be had.
"""
import email
import email.policy
import pathlib
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "support"))
import screen
from mail_server import MailServer
from screen import MAIN, wait_for


class Windows(unittest.TestCase):
    def open_from_tree(self, name, *keys):
        self.screen.window(MAIN)
        self.screen.keys("ctrl+shift+f", "ctrl+a")
        self.screen.type(name)
        self.screen.keys("Return", *keys, "Return")

    def plain_text(self, file):
        return self.screen.run("html", str(file))

    def insert_code_and_save(self):
        template = self.screen.home / "Templates/Inspection notice.rtf"
        self.open_from_tree("Inspection")
        # "Tenant Code" is the last but four of the Insert menu's codes.
        self.screen.keys("ctrl+End", "alt+i", "Right", *["Up"] * 5, "Return", "ctrl+s")
        wait_for("the saved template", lambda: "<<Tenant Code>>" in template.read_text("latin-1"))

    def generate_for_two(self):
        self.screen.keys("ctrl+g")
        dialog = self.screen.window("Generate Letters")
        self.screen.type("Young")
        # One recipient is ticked with the keyboard, the other with the mouse.
        self.screen.keys("Tab", "space", "alt+s")
        self.screen.click(dialog, 100, 109)
        self.screen.keys("alt+g")
        self.screen.until_gone(dialog)
        for answer in ("Mere", "Ladders", "Hemi", "Dogs"):
            self.screen.answer_box(answer)
        for name, code, who, what in (("Ben Young", "T00028", "Mere", "Ladders"),
                                      ("Kiri Young", "T00021", "Hemi", "Dogs")):
            file = self.screen.home / name / "Inspection notice.rtf"
            wait_for(f"the letter to {name}", file.exists)
            text = self.plain_text(file)
            for expected in (name, code, who, what):
                self.assertIn(expected, text)
            for left in ("&lt;&lt;", "<<"):
                self.assertNotIn(left, text)

    def write_to_those_in_arrears(self):
        self.open_from_tree("Rent review")
        self.screen.keys("ctrl+g")
        dialog = self.screen.window("Generate Letters")
        # The filter's first line is about the balance.
        self.screen.keys("shift+Tab", "space", "Tab", "Tab")
        self.screen.type("4000")
        self.screen.keys("alt+a", "alt+s", "alt+g")
        self.screen.until_gone(dialog)
        listed = self.screen.run("generate", "--template", "Rent review", "--list",
                                 "--where", "Balance Owing >= 4000").splitlines()
        expected = {line.split(" (")[0] for line in listed}
        self.assertGreater(len(expected), 1)
        logs = lambda: [log.read_text() for log in self.screen.home.glob("Letters *.log")]
        run = wait_for("the whole run", lambda: next(
            (log for log in logs() if "Rent review" in log and "\ncomplete" in log), None))
        written = {line.split("\t")[2] for line in run.splitlines()
                   if line.startswith("recipient\t")}
        self.assertEqual(written, expected)
        for name in written:
            self.assertTrue((self.screen.home / name / "Rent review.rtf").exists(), name)

    def print_letter(self):
        printed = self.screen.home / "Printed"
        self.open_from_tree("Ben Young", "Right", "Down")
        self.screen.keys("ctrl+p")
        self.screen.answer("Print", "Return")
        pdf = wait_for("the printed PDF", lambda: next(printed.glob("*.pdf"), None))
        text = subprocess.run(["pdftotext", pdf, "-"], capture_output=True, text=True,
                              check=True).stdout
        for expected in ("Dear Ben Young", "Mere", "T00028"):
            self.assertIn(expected, text)

    def replace_and_print_a_page(self):
        letter = self.screen.home / "Templates/Two pages.rtf"
        self.open_from_tree("Two pages")
        self.screen.keys("ctrl+h")
        self.screen.type("rent")
        self.screen.keys("Tab")
        self.screen.type("fee")
        # Match case, whole words, and back to "Replace All".
        self.screen.keys(*["Tab"] * 5, "space", "Tab", "space", "shift+Tab", "shift+Tab", "Return",
                         "Escape", "ctrl+s")
        wait_for("the letter with other words",
                 lambda: "The fee. Rent, rental" in self.plain_text(letter))
        self.screen.keys("ctrl+p")
        window = self.screen.window("Print")
        self.screen.keys("Tab", "Tab")
        self.screen.type("2")
        self.screen.keys("Return")
        self.screen.until_gone(window)
        pdf = self.screen.home / "Printed/Two pages - Templates.pdf"
        wait_for("the printed page", pdf.exists)
        text = subprocess.run(["pdftotext", pdf, "-"], capture_output=True, text=True,
                              check=True).stdout
        self.assertEqual(text.split(), ["your", "fee"])
        self.screen.window(MAIN)

    def mail_letter(self, server):
        self.screen.window(MAIN)
        self.screen.keys("ctrl+shift+e")
        self.screen.answer("E-mail this letter", "Return", text="Your inspection")
        wait_for("the message", (server.folder / "1.eml").exists)
        message = email.message_from_bytes((server.folder / "1.eml").read_bytes(),
                                           policy=email.policy.default)
        self.assertEqual(message["subject"], "Your inspection")
        self.assertEqual(message["to"], "tenant28@example.test")
        self.assertIn("Dear Ben Young", message.get_body(("plain",)).get_content())

    def check_spelling(self):
        letter = self.screen.home / "Ben Young/Inspection notice.rtf"
        self.screen.window(MAIN)
        self.screen.keys("ctrl+Home")
        self.screen.type("Pleese read this. ")
        self.screen.keys("F7")
        self.screen.answer("Spell Check", "Return", text="Please")
        self.screen.answer("Spell Check", "Escape")  # the agency's name is no English word
        self.screen.window(MAIN)
        self.screen.keys("ctrl+s")
        wait_for("the corrected letter", lambda: "Please read this." in self.plain_text(letter))

    def close(self):
        self.screen.keys("ctrl+q")
        wait_for("the end of the program", lambda: self.screen.running.poll() is not None)
        self.assertEqual(self.screen.running.returncode, 0)

    def test_a_print_command_asks_in_windows_where_nobody_answers_in_text(self):
        line = 'PRINTCHEQUE="" PAYEE="Aroha" VALUE="5" FORMAT="Trust account cheque"'
        with screen.Screen(sys.argv[1]) as shown, \
                subprocess.Popen([sys.argv[1], line], env=shown.environment, text=True,
                                 stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                 stderr=subprocess.DEVNULL) as command:
            shown.answer("Print", "Return")
            self.assertIn("Printed: ", command.communicate()[0])

    def test_a_receipt_that_is_not_as_it_should_be_leaves_on_a_word_only(self):
        line = 'PRINTRECEIPT="T00001" FORMAT="Held"'
        with screen.Screen(sys.argv[1]) as shown:
            (shown.home / "Templates/Held.rtf").write_text(r"{\rtf1 Dear <<Tenant Nmae>>}")
            for key, status, printed in ("alt+n", 1, 0), ("Escape", 1, 0), ("alt+y", 0, 1):
                with subprocess.Popen([sys.argv[1], line], env=shown.environment, text=True,
                                      stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                      stderr=subprocess.DEVNULL) as command:
                    shown.answer("General - ReceiptPrint", key)
                    self.assertEqual(command.communicate()[0].count("Printed: "), printed)
                self.assertEqual(command.returncode, status)

    def kept(self):
        """What is on the disk of letters that were not saved."""
        sessions = self.screen.folder / "state/tenora/unsaved"
        return "".join(file.read_text() for file in sessions.glob("session-*/*.letter"))

    def type_and_end(self, words, end):
        self.open_from_tree("Inspection")
        self.screen.keys("ctrl+Home")
        self.screen.type(words)
        # Its box shows that the words have arrived.
        self.screen.keys("ctrl+f")
        self.screen.window("Find text")
        end()
        self.screen.running.wait(screen.LIMIT)

    def start_and_recover(self, words):
        self.screen.start(lambda: self.screen.answer("Unsaved Letters", "Return"))
        self.screen.keys("ctrl+s")
        template = self.screen.home / "Templates/Inspection notice.rtf"
        wait_for("the recovered letter", lambda: words in template.read_text("latin-1"))
        wait_for("nothing kept", lambda: not self.kept())

    def test_an_end_without_saving_loses_nothing(self):
        with screen.Screen(sys.argv[1]) as self.screen:
            def kill_when_kept():
                wait_for("the kept letter", lambda: "Killed words" in self.kept())
                self.screen.running.kill()

            self.screen.start()
            self.type_and_end("Killed words. ", kill_when_kept)
            self.start_and_recover("Killed words. ")

            self.type_and_end("Ended words. ", self.screen.running.terminate)
            self.assertEqual(self.screen.running.returncode, -signal.SIGTERM)
            self.start_and_recover("Ended words. Killed")

            self.type_and_end("Unseen words. ", self.screen.server.kill)
            self.assertIn("Unseen words. Ended", self.kept())

    def test_from_a_template_to_a_letter_on_paper_and_in_the_mail(self):
        with screen.Screen(sys.argv[1]) as self.screen, \
                MailServer(self.screen.folder / "mail") as server:
            self.screen.run("query", "--write", str(self.screen.home / "property.mdb"),
                            f"update options set SmtpSend=True, SmtpPort={server.stored_port}")
            (self.screen.home / "Templates/Two pages.rtf").write_text(
                r"{\rtf1 The rent. Rent, rental\page your rent}")
            self.screen.start()
            self.insert_code_and_save()
            self.generate_for_two()
            self.print_letter()
            self.mail_letter(server)
            self.check_spelling()
            self.write_to_those_in_arrears()
            self.replace_and_print_a_page()
            self.close()


if __name__ == "__main__":
    if screen.missing():
        print("skipped, not installed:", *screen.missing())
        sys.exit(77)
    unittest.main(argv=sys.argv[:1])

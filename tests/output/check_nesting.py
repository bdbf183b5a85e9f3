"""Reads HTML from standard input; fails when its tags do not nest."""
import html.parser
import sys

VOID = {"br", "img"}


class Checker(html.parser.HTMLParser):
    def __init__(self):
        super().__init__()
        self.open = []

    def handle_starttag(self, tag, attrs):
        if tag not in VOID:
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            sys.exit(f"misplaced </{tag}> at {self.getpos()}")


checker = Checker()
checker.feed(sys.stdin.read())
checker.close()
if checker.open:
    sys.exit(f"never closed: {checker.open}")

"""Reads HTML fragments with a parser of its own and prints what they show.

usage: read_html.py FILE... — for each file one line: the text with tags stripped, entities read
and white space dropped. Fails when a tag is not closed where it should be.
"""
import html.parser
import sys


class Reader(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.open, self.text = [], []

    def handle_starttag(self, tag, attributes):
        if tag != "br":
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            sys.exit(f"{tag} closed out of place at {self.getpos()}")

    def handle_data(self, data):
        self.text.append(data)


sys.stdout.reconfigure(encoding="utf-8")
for path in sys.argv[1:]:
    reader = Reader()
    with open(path, encoding="utf-8") as file:
        reader.feed(file.read())
    reader.close()
    if reader.open:
        sys.exit(f"{path}: never closed: {reader.open}")
    print("".join("".join(reader.text).split()))

#!/usr/bin/python3
"""Compares the pages that this program and LibreOffice make of the RTF files of a folder.

A file counts as readable when LibreOffice's PDF of it shows text or ink. Of each readable file these
things are compared:

  text   every word of LibreOffice's PDF is found in ours as often, white space, hyphens, letter
         case, punctuation, characters that the fonts lack and the order of columns aside; a line
         repeated at the top or bottom of several pages counts once
  pages  both have the same number of pages
  alike  page 1 has its ink in the same places, 0.85 of it within 1 mm across and 0.5 mm down: see
         Ink.overlap
  near   the same within 2 mm across and 1 mm down: a paragraph that is set a little wider or lower
         passes, one that is moved by half a line does not. With 2 mm down, the lines of most text
         would run together, and any would pass

What LibreOffice makes up does not count, nor what ours leaves out on purpose. How many files would
otherwise have failed is printed below the table:

  references  "Error: Reference source not found", where a field refers to nothing; we print the
              result that the author saw
  today       day, month, year, hour and minute of LibreOffice's PDF, in letters with fields for
              today's date or the time; ours keep the last result
  file name   the name under which the letter was given to LibreOffice, in fields for it
  empty end   pages without ink at the end; we spend no sheet on empty paragraphs there

LibreOffice's PDFs and our figures are kept in FOLDER/.compare, by checksum of the file and of our
program, so that an interrupted run goes on where it stopped and a second run costs nothing. Needs
LibreOffice and poppler's tools. Build the target print_letter first.
"""
import argparse
import collections
import functools
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unicodedata
import zlib

ROOT = pathlib.Path(__file__).resolve().parents[1]
OUR_SECONDS = 10          # of processor time, so that a busy machine changes nothing
OUR_WAIT = 120            # seconds on the clock
OFFICE_BATCH = 100        # files to one start of LibreOffice, which takes longer than a letter
OFFICE_SECONDS = 90       # without a new PDF; a file that a batch ends at gets another try alone
TOOL_SECONDS = 60         # for a poppler tool
DPI = 50
PICTURE_DPI = 70
ACROSS, DOWN = 2, 1       # pixels that ink may be off: 1 mm and 0.5 mm
NEAR_ACROSS, NEAR_DOWN = 4, 2
ALIKE = 0.85
INK = 208                 # greys darker than this are ink
FORMAT = 6                # of our kept figures; raised when they would come out differently
# Both sides have these fonts only: which font stands in for a missing one is not what is compared.
# LibreOffice takes Liberation Sans for all others, also for those with serifs or of one width.
SERIF = ("Book Antiqua", "Bookman", "Bookman Old Style", "Cambria", "Century", "Century Schoolbook",
         "Constantia", "Garamond", "Georgia", "Palatino", "Palatino Linotype", "Tms Rmn")
ONE_WIDTH = ("Andale Mono", "Consolas", "Lucida Console", "Menlo", "Monaco")
ALIAS = """  <alias binding="same">
    <family>{}</family><prefer><family>{}</family></prefer>
  </alias>
"""
FONT_FOLDER = "/usr/share/fonts/truetype/liberation"
FONTS = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig>
  <dir>{folder}</dir>
{aliases}  <include ignore_missing="yes">/etc/fonts/conf.d</include>
  <cachedir>{cache}</cachedir>
</fontconfig>
"""
ALIASES = ("".join(ALIAS.format(name, "Liberation Serif") for name in SERIF) +
           "".join(ALIAS.format(name, "Liberation Mono") for name in ONE_WIDTH))
WRITERS = ("Word", "WordPad", "others")


class CompareError(Exception):
    pass


def writer_of(source):
    """Which program wrote this RTF, as far as its generator or its habits tell."""
    named = re.search(rb"\{\\\*\\generator ([^;}]*)", source)
    if named:
        name = named.group(1)
        if re.match(rb"Microsoft Word|Word\b", name):
            return "Word"
        return "WordPad" if re.match(rb"Msftedit|Riched20|WordPad", name) else "others"
    if re.search(rb"\\rsidtbl|\\themedata|\\insrsid|\\vern\d|\\\*\\pnseclvl1\\", source):
        return "Word"
    if b"\\viewkind4\\uc1" in source[:3000] or b"\\deftab720{\\fonttbl" in source[:100]:
        return "WordPad"
    return "others"


def run(command, seconds, **options):
    """The finished process; kills it with its children when the time is up and returns None."""
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, start_new_session=True, **options) as process:
        try:
            output, errors = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return None
    return subprocess.CompletedProcess(command, process.returncode, output, errors)


def wait_while_files_come(process, folder, patience):
    """Whether the process ended by itself; it is killed when no file is added for `patience` s."""
    count, since = 0, time.monotonic()
    try:
        while time.monotonic() - since < patience:
            try:
                process.wait(1)
                return True
            except subprocess.TimeoutExpired:
                now = len(list(folder.iterdir()))
                if now != count:
                    count, since = now, time.monotonic()
        return False
    finally:
        if process.poll() is None:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def limit_processor_time():
    resource.setrlimit(resource.RLIMIT_CPU, (OUR_SECONDS, OUR_SECONDS + 1))


def write_whole(path, data):
    """Several runs may share a folder: a reader sees the old file or the new one."""
    scratch = path.with_name(f"{path.name}.{os.getpid()}")
    scratch.write_bytes(data)
    scratch.replace(path)


class Office:
    """LibreOffice's PDFs, kept by the checksum of the file they were made of."""

    def __init__(self, cache, scratch, environment):
        # Other fonts make other pages.
        self.fonts = hashlib.sha256((FONTS + ALIASES).encode()).hexdigest()[:8]
        self.folder = cache / f"office-{self.fonts}"
        self.folder.mkdir(parents=True, exist_ok=True)
        self.scratch = scratch
        self.environment = environment

    def pdf(self, checksum):
        return self.folder / f"{checksum}.pdf"

    def refusal(self, checksum):
        return self.folder / f"{checksum}.none"

    def make(self, files):
        """`files` are (checksum, path) pairs. Each ends with a PDF or with a note of why not."""
        left = self.still_to_do(files)
        while left:
            print(f"LibreOffice: {len(left)} files left", file=sys.stderr)
            batch = left[:OFFICE_BATCH]
            self.convert(batch)
            failed = self.still_to_do(batch)
            if failed:
                # The first without a PDF is what the batch ended at; those after it are innocent.
                ended = self.convert(failed[:1])
                checksum = failed[0][0]
                if not self.pdf(checksum).exists():
                    write_whole(self.refusal(checksum), ended.encode())
            left = self.still_to_do(left)

    def still_to_do(self, files):
        return [file for file in files
                if not self.pdf(file[0]).exists() and not self.refusal(file[0]).exists()]

    def convert(self, files):
        """Returns how it ended, for a file that has no PDF after it."""
        with tempfile.TemporaryDirectory(dir=self.scratch) as folder:
            folder = pathlib.Path(folder)
            names = [str(shutil.copy(path, folder / f"{checksum}.rtf")) for checksum, path in files]
            try:
                process = subprocess.Popen(
                    ["soffice", f"-env:UserInstallation=file://{self.scratch}/profile", "--headless",
                     "--norestore", "--convert-to", "pdf", "--outdir", str(folder), *names],
                    stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                    start_new_session=True, env=self.environment)
            except FileNotFoundError as error:
                raise CompareError("soffice is missing: install libreoffice-writer-nogui") from error
            finished = wait_while_files_come(process, folder, OFFICE_SECONDS)
            for checksum, _ in files:
                made = folder / f"{checksum}.pdf"
                # One that was being written when the time was up has no end.
                if made.exists() and b"%%EOF" in made.read_bytes()[-1024:]:
                    write_whole(self.pdf(checksum), made.read_bytes())
        return "no PDF" if finished else f"no PDF in {OFFICE_SECONDS} s"


def poppler(*command):
    try:
        done = run(command, TOOL_SECONDS)
    except FileNotFoundError as error:
        raise CompareError(f"{command[0]} is missing: install poppler-utils") from error
    if done is None or done.returncode != 0:
        raise CompareError(f"{command[0]} cannot read {command[-2] if command[-1] == '-' else command[-1]}")
    return done.stdout


def page_count(pdf):
    return int(re.search(rb"^Pages:\s+(\d+)", poppler("pdfinfo", str(pdf)), re.M).group(1))


def page_width(pdf):
    """Of page 1, in points."""
    return float(re.search(rb"^Page size:\s+([\d.]+) x", poppler("pdfinfo", str(pdf)), re.M).group(1))


def texts(pdf):
    """The pages' texts, once in reading order and once in the order of printing."""
    return [poppler("pdftotext", *order, "-enc", "UTF-8", str(pdf), "-").decode("utf-8", "replace")
            for order in ([], ["-raw"])]


@functools.lru_cache(None)
def glyphs():
    """The characters that each of the fonts has."""
    common = None
    for font in pathlib.Path(FONT_FOLDER).glob("*-Regular.ttf"):
        listed = poppler("fc-query", "--format", "%{charset}", str(font)).decode()
        ranges = [[int(end, 16) for end in part.split("-")] for part in listed.split()]
        has = {code for ends in ranges for code in range(ends[0], ends[-1] + 1)}
        common = has if common is None else common & has
    if not common:
        raise CompareError(f"{FONT_FOLDER} has no fonts: install fonts-liberation")
    return frozenset(map(chr, common))


@functools.lru_cache(None)
def is_compared(character):
    """Letters, digits and currencies that the fonts have. Of others our PDF keeps only the box."""
    return character in glyphs() and (unicodedata.category(character)[0] in "LMN" or
                                      character in "$€£")


def plain(text):
    """What is compared, other characters as spaces; soft hyphens and hyphenation removed."""
    text = unicodedata.normalize("NFC", text).replace("\u00ad", "")
    text = re.sub(r"(?<=\w)[-\u2010]\n\s*(?=\w)", "", text)
    text = "".join(c if is_compared(c) else " " for c in text)
    return unicodedata.normalize("NFKC", text).casefold()


def without_repeated_edges(text):
    """A header that LibreOffice prints on five pages must not be missed when ours needs four."""
    edge, seen, kept = 4, set(), []
    for page in text.split("\f"):
        lines = [line for line in page.split("\n") if line.strip()]
        for i, line in enumerate(lines):
            key = re.sub(r"\d+", "#", " ".join(line.split()))
            if i < edge or i >= len(lines) - edge:
                if key in seen:
                    continue
                seen.add(key)
            kept.append(line)
    return "\n".join(kept)


def missing_words(office_texts, our_texts):
    """The words that our pages lack, and how many words LibreOffice's pages have.

    A word is missing only when it is in both orders of printing: where columns are read line by line,
    a word that we break and LibreOffice does not is in pieces.
    """
    missing = None
    for office, ours in zip(office_texts, our_texts):
        words = collections.Counter(plain(without_repeated_edges(office)).split())
        our_plain = plain(ours)
        our_words = collections.Counter(our_plain.split())
        short = [word for word, count in words.items() if our_words[word] < count]
        if short:
            our_flat = "".join(our_plain.split())
            short = [word for word in short if our_flat.count(word) < words[word]]
        missing = set(short) if missing is None else missing & set(short)
    return sorted(missing), sum(words.values())


def shown_by_office_alone(source, pdf, checksum):
    """What LibreOffice puts into this letter of itself: patterns by the names of --help."""
    found = {"references": [r"error:?\s+reference\s+source\s+not\s+found"],
             "file name": [rf"{checksum}(\.rtf)?"]}
    if re.search(rb"fldinst[^}]*[\s{](DATE|TIME)\b|\\ch(date|time)\b", source):
        info = poppler("pdfinfo", "-isodates", str(pdf)).decode()
        made = re.search(r"CreationDate:\s+\d\d(\d\d)-(\d\d)-(\d\d)T(\d\d):(\d\d)", info)
        if made:
            year, month, day, hour, minute = (f"0?{int(part)}" for part in made.groups())
            date = [rf"(20)?{year}", month, day]
            named = rf"\b{day}\.?\s+\w+\s+(20)?{year}\b"
            found["today"] = ([named] + [rf"\b{a}[./-]\s?{b}[./-]\s?{c}\b" for a in date
                                        for b in date for c in date if len({a, b, c}) == 3] +
                              [rf"\b{hour}:{minute}(:\d\d)?\b"])
    return found


def without(patterns, pages):
    return [re.sub("|".join(patterns), " ", text, flags=re.I) if patterns else text
            for text in pages]


def missing_but_made_up(source, office, checksum, our_texts):
    """As missing_words, without what LibreOffice made up; and the names of what did not count."""
    office_texts = texts(office)
    missing, words = missing_words(office_texts, our_texts)
    if not missing:
        return missing, words, []
    names = []
    for name, patterns in shown_by_office_alone(source, office, checksum).items():
        rest = without(patterns, office_texts)
        if rest != office_texts:
            fewer, words = missing_words(rest, our_texts)
            if len(fewer) < len(missing):
                names.append(name)
            missing, office_texts = fewer, rest
    return missing, words, names


def pages_with_end(pdf, pages):
    """How many pages are left without those at the end that have no ink."""
    while pages > 1 and not GreyPage(pdf, DPI, pages).has_ink():
        pages -= 1
    return pages


class GreyPage:
    """A page as greys, a byte a pixel."""

    def __init__(self, pdf, dpi, page=1):
        image = poppler("pdftoppm", "-gray", "-r", str(dpi), "-f", str(page), "-l", str(page),
                        str(pdf))
        header = re.match(rb"P5\s+(\d+)\s+(\d+)\s+255\s", image)
        if not header:
            raise CompareError(f"pdftoppm draws no page of {pdf}")
        self.width, self.height = int(header.group(1)), int(header.group(2))
        self.pixels = image[header.end():]

    def has_ink(self):
        return min(self.pixels, default=255) < INK

    def row(self, number):
        """White below the page."""
        start = number * self.width
        return self.pixels[start:start + self.width].ljust(self.width, b"\xff")


class Ink:
    """Page 1's ink as the bits of one number, row after row, so that a page is widened and intersected
    without a loop over its pixels."""
    WIDTH = 2048  # of a row; what lies beyond about a metre is not compared

    def __init__(self, pdf):
        page = GreyPage(pdf, DPI)
        dark = bytes(ord("1") if grey < INK else ord("0") for grey in range(256))
        used = self.WIDTH - 2 * NEAR_ACROSS
        bits = [page.row(row)[:used].translate(dark).ljust(self.WIDTH, b"0")
                for row in range(min(page.height, self.WIDTH))]
        self.bits = int(b"".join(bits).ljust(self.WIDTH * self.WIDTH, b"0"), 2)

    def widened(self, across, down):
        wide = functools.reduce(int.__or__, (self.bits << n for n in range(1, across + 1)), self.bits)
        wide = functools.reduce(int.__or__, (self.bits >> n for n in range(1, across + 1)), wide)
        row = self.WIDTH
        return functools.reduce(int.__or__, (wide << row * n | wide >> row * n
                                             for n in range(1, down + 1)), wide)

    def overlap(self, other, across=ACROSS, down=DOWN):
        """Precision and recall of the ink as one figure: of either page the part of its ink that has
        ink of the other within so many pixels; 1 for equal pages, also for two empty ones."""
        if not self.bits or not other.bits:
            return float(self.bits == other.bits)
        found = (self.bits & other.widened(across, down)).bit_count() / self.bits.bit_count()
        covered = (other.bits & self.widened(across, down)).bit_count() / other.bits.bit_count()
        return 2 * found * covered / (found + covered) if found + covered else 0.0


class Letter:
    """One file's comparison."""

    def __init__(self, path, checksum, figures):
        self.path = path
        self.checksum = checksum
        self.writer = figures["writer"]
        self.state = figures["state"]  # compared, unreadable, or what went wrong with our PDF
        self.pages = figures.get("pages", [0, 0])
        self.missing = figures.get("missing", [])
        self.words = figures.get("words", 0)
        self.overlap = figures.get("overlap", 0.0)
        self.near = figures.get("near", 0.0)
        self.not_counted = figures.get("not_counted", [])

    @property
    def readable(self):
        return self.state != "unreadable"

    @property
    def compared(self):
        return self.state == "compared"

    @property
    def has_text(self):
        return self.compared and not self.missing

    @property
    def has_pages(self):
        return self.compared and self.pages[0] == self.pages[1]

    @property
    def is_alike(self):
        return self.compared and self.overlap >= ALIKE

    @property
    def is_near(self):
        return self.compared and self.near >= ALIKE

    @property
    def good(self):
        return self.has_text and self.has_pages and self.is_alike

    def badness(self):
        """Without a PDF first, then by how much is missing, off and elsewhere."""
        if not self.compared:
            return 4.0
        lost = len(self.missing) / max(self.words, 1)
        ours, office = self.pages
        off = abs(ours - office) / max(ours, office, 1)
        return (bool(self.missing) + lost + (off > 0) * 0.5 + off +
                (0 if self.is_alike else 1 - self.overlap))

    def reason(self):
        if not self.compared:
            return self.state
        parts = []
        if self.missing:
            some = " ".join(word[:30] for word in self.missing[:6])
            parts.append(f"{len(self.missing)} words missing: {some}")
        if not self.has_pages:
            parts.append(f"{self.pages[0]} pages, not {self.pages[1]}")
        if not self.is_alike:
            parts.append(f"page 1 {self.overlap:.2f} alike, {self.near:.2f} near")
        return "; ".join(parts)


class Comparison:
    def __init__(self, folder, program, scratch):
        cache = folder / ".compare"
        self.program = program
        self.scratch = scratch
        fonts = scratch / "fonts.conf"
        fonts.write_text(FONTS.format(folder=FONT_FOLDER, aliases=ALIASES,
                                      cache=scratch / "fonts"))
        self.environment = {**os.environ, "TENORA_SETTINGS": str(scratch / "settings"),
                            "QT_QPA_PLATFORM": "offscreen", "LC_CTYPE": "C.UTF-8",
                            "FONTCONFIG_FILE": str(fonts)}
        self.environment.pop("LC_ALL", None)
        self.office = Office(cache, scratch, self.environment)
        stamp = hashlib.sha256(program.read_bytes()).hexdigest()[:16]
        self.figures = cache / f"ours-{FORMAT}-{self.office.fonts}-{stamp}"
        self.figures.mkdir(parents=True, exist_ok=True)

    def letter(self, path, checksum):
        kept = self.figures / f"{checksum}.json"
        try:
            figures = json.loads(kept.read_text())
        except (FileNotFoundError, ValueError):
            figures = self.compare(path, checksum)
            write_whole(kept, json.dumps(figures).encode())
        return Letter(path, checksum, figures)

    def compare(self, path, checksum):
        figures = {"writer": writer_of(path.read_bytes()), "state": "unreadable"}
        office = self.office.pdf(checksum)
        if not office.exists():
            return figures
        office_ink = Ink(office)
        if not office_ink.bits and not texts(office)[0].strip():
            return figures
        with tempfile.TemporaryDirectory(dir=self.scratch) as folder:
            ours = pathlib.Path(folder) / "letter.pdf"
            figures["state"] = self.print_ours(path, ours, checksum)
            if figures["state"] != "compared":
                return figures
            figures["missing"], figures["words"], not_counted = missing_but_made_up(
                path.read_bytes(), office, checksum, texts(ours))
            our_pages, pages = page_count(ours), page_count(office)
            if pages > our_pages:
                filled = max(pages_with_end(office, pages), our_pages)
                if filled < pages:
                    not_counted.append("empty end")
                pages = filled
            figures["pages"] = [our_pages, pages]
            figures["not_counted"] = not_counted
            our_ink = Ink(ours)
            figures["overlap"] = round(office_ink.overlap(our_ink), 3)
            figures["near"] = round(office_ink.overlap(our_ink, NEAR_ACROSS, NEAR_DOWN), 3)
        return figures

    def print_ours(self, path, pdf, checksum):
        """On the paper of the country that the letter is from: ours is the printer's."""
        letter_paper = abs(page_width(self.office.pdf(checksum)) - 612) < 2
        environment = {**self.environment, "LC_PAPER": "en_US" if letter_paper else "en_NZ"}
        done = run([str(self.program), str(path), str(pdf)], OUR_WAIT, env=environment,
                   preexec_fn=limit_processor_time)
        if done is None or done.returncode == -signal.SIGXCPU:
            return f"not printed in {OUR_SECONDS} s"
        if done.returncode < 0:
            return f"died of {signal.Signals(-done.returncode).name}"
        if done.returncode > 0 or not pdf.exists():
            return "not printed: " + done.stderr.decode("utf-8", "replace").strip()[:200]
        return "compared"

    def keep_pictures(self, letters, folder):
        """Page 1 of each, ours on the left and LibreOffice's on the right, as NAME.png."""
        folder.mkdir(parents=True, exist_ok=True)
        for letter in letters:
            with tempfile.TemporaryDirectory(dir=self.scratch) as scratch:
                ours = pathlib.Path(scratch) / "letter.pdf"
                pdfs = [self.office.pdf(letter.checksum)]
                if self.print_ours(letter.path, ours, letter.checksum) == "compared":
                    pdfs.insert(0, ours)
                write_png(folder / f"{letter.path.stem}.png",
                          [GreyPage(pdf, PICTURE_DPI) for pdf in pdfs])


def write_png(path, pages):
    """The pages side by side, a dark line between them."""
    height = max(page.height for page in pages)
    rows = []
    for row in range(height):
        parts = [page.row(row) for page in pages]
        rows.append(b"\0" + b"\x40\x40".join(parts))  # each row begins with its filter, none
    width = len(rows[0]) - 1
    chunks = [(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)),
              (b"IDAT", zlib.compress(b"".join(rows))), (b"IEND", b"")]
    path.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(
        struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        for kind, data in chunks))


def percent(count, total):
    return f"{100 * count / total:.1f} %" if total else "-"


def print_table(letters):
    groups = [(writer, [letter for letter in letters if letter.writer == writer])
              for writer in WRITERS]
    groups += [("Word and WordPad", groups[0][1] + groups[1][1]), ("all", letters)]
    print(f"{'written by':18}{'files':>7}{'readable':>10}{'printed':>10}{'text':>10}{'pages':>10}"
          f"{'alike':>10}{'near':>10}{'text, pages, alike':>20}")
    for name, group in groups:
        readable = [letter for letter in group if letter.readable]
        columns = [percent(sum(map(test, readable)), len(readable))
                   for test in (lambda letter: letter.compared, lambda letter: letter.has_text,
                                lambda letter: letter.has_pages, lambda letter: letter.is_alike,
                                lambda letter: letter.is_near, lambda letter: letter.good)]
        print(f"{name:18}{len(group):7}{len(readable):10}" +
              "".join(f"{column:>{20 if i == 5 else 10}}" for i, column in enumerate(columns)))


def print_not_counted(letters):
    names = collections.Counter(name for letter in letters for name in letter.not_counted)
    for name, count in sorted(names.items()):
        print(f"not counted: {name} in {count} file{'s' * (count != 1)}")


def files_of(folder, pattern):
    """(checksum, path) of each different RTF file below the folder, in the order of names."""
    found = {}
    for path in sorted(folder.rglob("*.rtf")):
        if path.is_file() and ".compare" not in path.relative_to(folder).parts:
            if re.search(pattern, str(path.relative_to(folder))):
                found.setdefault(hashlib.sha256(path.read_bytes()).hexdigest(), path)
    return list(found.items())


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path, help="RTF files, in folders or not")
    parser.add_argument("--program", type=pathlib.Path, default=ROOT / "build/release/print_letter",
                        help="the built print_letter (default: the release build's)")
    parser.add_argument("--only", default="", metavar="REGEX", help="files whose path has a match")
    parser.add_argument("--worst", type=int, metavar="N", help="list N files, not all that differ")
    parser.add_argument("--keep", type=pathlib.Path, metavar="DIR",
                        help="keep page 1 of the listed files there, ours beside LibreOffice's")
    options = parser.parse_args()
    if not options.folder.is_dir():
        raise CompareError(f"{options.folder} is no folder")
    if not options.program.is_file():
        raise CompareError(f"{options.program} is not there: build print_letter")
    files = files_of(options.folder, options.only)
    if not files:
        raise CompareError(f"no such .rtf file in {options.folder}")
    with tempfile.TemporaryDirectory(prefix="tenora-compare-") as scratch:
        comparison = Comparison(options.folder, options.program.resolve(), pathlib.Path(scratch))
        comparison.office.make(files)
        letters = []
        for number, (checksum, path) in enumerate(files, 1):
            if number % 100 == 0:
                print(f"{number} of {len(files)} compared", file=sys.stderr)
            letters.append(comparison.letter(path, checksum))
        print_table(letters)
        print_not_counted(letters)
        worst = sorted((letter for letter in letters if letter.readable and not letter.good),
                       key=lambda letter: (-letter.badness(), str(letter.path)))[:options.worst]
        for letter in worst:
            print(f"{letter.path.relative_to(options.folder)}\t{letter.writer}\t{letter.reason()}")
        if options.keep:
            comparison.keep_pictures(worst, options.keep)


if __name__ == "__main__":
    try:
        main()
    except CompareError as problem:
        sys.exit(f"compare_with_office.py: {problem}")
    except KeyboardInterrupt:
        sys.exit(130)

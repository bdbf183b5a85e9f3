#!/usr/bin/python3
"""Compares every value that this program and mdb-export read in the Access files of a folder.

Each table that either lists is read by both, and the rows are compared: in their order, or, as
mdb-export finds rows that have moved elsewhere, in any. Null and empty text are alike to mdb-export;
single and double precision numbers are compared to 6 and 12 digits.

What is known of mdb-export does not count; how often it was met is printed:

  type        multi-valued columns, big integers and extended dates, which it does not know
  calculated  calculated columns, whose wrapper it reads as the value
  date        dates before 1900, which it prints wrongly or not at all, and those that it prints as
              1900-01-00, far ahead
  character   characters that it prints as "?": those beyond the basic plane, as two, and those that
              old files' code pages leave undefined
  protected   files with a password or encrypted, which we refuse

Exit status 1 where anything else differs. Needs mdb-tools.
"""
import argparse
import collections
import decimal
import pathlib
import re
import struct
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
UNKNOWN_TYPES = ("unknown", "complex", "bigint", "big integer", "extended", "date/time extended")
SECONDS = 600
SHOWN = 5                 # differences of one table
NEAREST = 500             # rows among which the one that ours should equal is looked for
UNESCAPED = {"t": "\t", "n": "\n", "r": "\r", "\\": "\\"}


def run(*command):
    return subprocess.run([str(word) for word in command], capture_output=True, timeout=SECONDS,
                          check=False)


def text_of(raw):
    return raw.decode("utf-8", "replace")


def our_rows(tenora, file, table):
    """Column names and rows as texts, or the error."""
    result = run(tenora, "query", file, f"select * from [{table}]")
    if result.returncode != 0:
        return None, text_of(result.stderr).strip()
    unescape = re.compile(r"\\([tnr\\])")
    records = [[unescape.sub(lambda m: UNESCAPED[m.group(1)], field) for field in line.split("\t")]
               for line in text_of(result.stdout).split("\n")[:-1]]
    return records, ""


def csv_records(text):
    """As mdb-export writes it, NUL characters and line ends within fields included."""
    records, record, at = [], [], 0
    field = re.compile(r'"((?:[^"]|"")*)"|([^,\n]*)')
    while at < len(text):
        found = field.match(text, at)
        quoted = found.group(1)
        record.append(found.group(2) if quoted is None else quoted.replace('""', '"'))
        at = found.end()
        if at < len(text) and text[at] == ",":
            at += 1
            continue
        records.append(record)
        record = []
        at += 1
    return records


def their_rows(file, table):
    result = run("mdb-export", "-b", "hex", "-D", "%Y-%m-%d %H:%M:%S", "-T", "%Y-%m-%d %H:%M:%S",
                 file, table)
    if result.returncode != 0:
        return None, text_of(result.stderr).strip()
    return csv_records(text_of(result.stdout)), ""


def column_types(file, table):
    """The types of the columns in order, in lower case: "text (20)"."""
    schema = text_of(run("mdb-schema", "--no-indexes", "--no-relations", "-T", table, file).stdout)
    body = schema[schema.find("\n (\n"):]
    return [found.group(1).strip().lower()
            for found in re.finditer(r"^\t\[.*\]\s+(.+?),? *$", body, re.MULTILINE)]


def calculated_columns(file, table):
    names, name = set(), ""
    for line in text_of(run("mdb-prop", file, table).stdout).splitlines():
        if line.startswith("name: "):
            name = line[len("name: "):].strip()
        elif line.strip().startswith("Expression:") and line.split(":", 1)[1].strip():
            names.add(name)
    return names


def plain(value, kind):
    """A value of ours or theirs in one form."""
    if value == "":
        return value
    try:
        if kind.startswith("boolean"):
            return "0" if value == "0" else "1"
        if kind.startswith("single"):
            return "%.6g" % struct.unpack("f", struct.pack("f", float(value)))[0]
        if kind.startswith("double"):
            return "%.12g" % float(value)
        if kind.startswith(("currency", "numeric")):
            return str(decimal.Decimal(value).normalize() + 0)
    except (ValueError, OverflowError, decimal.InvalidOperation):
        return value
    if kind.startswith("datetime"):
        return value.removesuffix(" 00:00:00")
    if kind.startswith("replication"):
        if re.fullmatch("(?:[0-9A-Fa-f]{2})+", value):
            value = text_of(bytes.fromhex(value))
        return re.sub("[{}-]", "", value).lower()
    return value


def known_difference(kind, ours, theirs):
    if kind.startswith("datetime"):
        return "date" if re.match("0|1[0-8]", ours) or theirs.startswith("1900-01-00") else ""
    if kind.startswith(("text", "memo")):
        questions = re.sub("[\x80-\x9f]", "?", re.sub("[\U00010000-\U0010ffff]", "??", ours))
        return "character" if questions == theirs else ""
    return ""


class Comparison:
    def __init__(self, tenora):
        self.tenora = tenora
        self.counts = collections.Counter()
        self.known = collections.Counter()
        self.differences = 0

    def differ(self, where, what):
        self.differences += 1
        print(f"{where}: {what}")

    def compare_file(self, file, shown):
        listed = run(self.tenora, "tables", file)
        if listed.returncode != 0:
            error = text_of(listed.stderr).strip()
            if error.startswith("3031"):
                self.known["protected"] += 1
            elif run("mdb-tables", file).returncode == 0:
                self.differ(shown, error)
            else:
                self.counts["files that neither reads"] += 1
            return
        self.counts["files"] += 1
        ours = {line.split("\t")[0] for line in text_of(listed.stdout).splitlines()
                if line.split("\t")[-1].isdigit()}
        theirs = {name for name in text_of(run("mdb-tables", "-1", file).stdout).splitlines()
                  if not name.startswith("MSys")}
        for name in sorted(ours ^ theirs):
            self.differ(f"{shown}, {name}", "listed by " + ("us" if name in ours else "mdb-tables"))
        for name in sorted(ours & theirs):
            self.compare_table(file, name, f"{shown}, {name}")

    def compare_table(self, file, table, where):
        ours, error = our_rows(self.tenora, file, table)
        theirs, their_error = their_rows(file, table)
        if ours is None or theirs is None:
            return self.differ(where, error or f"mdb-export: {their_error}")
        self.counts["tables"] += 1
        types = column_types(file, table)
        if not theirs or ours[0] != theirs[0] or len(types) != len(ours[0]):
            return self.differ(where, f"columns {ours[0]}, {theirs[:1]}, {types}")
        if len(ours) != len(theirs):
            self.differ(where, f"{len(ours) - 1} rows, mdb-export {len(theirs) - 1}")
        calculated = calculated_columns(file, table)
        compared = []
        for i, name in enumerate(ours[0]):
            if name in calculated:
                self.known["calculated"] += len(ours) - 1
            elif types[i].startswith(UNKNOWN_TYPES):
                self.known["type"] += len(ours) - 1
            else:
                compared.append(i)
        self.counts["values"] += len(compared) * (len(ours) - 1)
        left = [tuple(plain(row[i], types[i]) for i in compared) for row in ours[1:]]
        right = [tuple(plain(row[i], types[i]) for i in compared) for row in theirs[1:]]
        if left != right:
            self.compare_rows(where, [ours[0][i] for i in compared], [types[i] for i in compared],
                              left, right)

    def compare_rows(self, where, names, types, left, right):
        both = collections.Counter(left) & collections.Counter(right)

        def others(rows):
            matched, rest = collections.Counter(both), []
            for row in rows:
                if matched[row] > 0:
                    matched[row] -= 1
                else:
                    rest.append(row)
            return rest

        def pairs(ours, theirs):
            """Each of our rows with the one of mdb-export's that is most like it."""
            for row in ours:
                if not theirs:
                    return
                near = range(min(len(theirs), NEAREST))
                best = max(near, key=lambda i: sum(a == b for a, b in zip(row, theirs[i])))
                yield row, theirs.pop(best)

        shown = 0
        for ours, theirs in pairs(others(left), others(right)):
            for name, kind, mine, other in zip(names, types, ours, theirs):
                if mine == other:
                    continue
                known = known_difference(kind, mine, other)
                if known:
                    self.known[known] += 1
                    continue
                shown += 1
                if shown <= SHOWN:
                    self.differ(where, f"{name} ({kind}): {mine[:80]!r}, mdb-export {other[:80]!r}")
                else:
                    self.differences += 1


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=pathlib.Path)
    parser.add_argument("--tenora", type=pathlib.Path, default=ROOT / "build/release/tenora",
                        help="the program (default: %(default)s)")
    call = parser.parse_args()
    comparison = Comparison(call.tenora)
    for file in sorted(call.folder.rglob("*")):
        if file.suffix.lower() in (".mdb", ".accdb") and file.is_file():
            comparison.compare_file(file, file.relative_to(call.folder))
    for name, count in [*comparison.counts.items(), *(
            (f"known: {name}", count) for name, count in sorted(comparison.known.items()))]:
        print(f"{count:>10,}  {name}")
    print(f"{comparison.differences:>10,}  differences")
    if comparison.counts["values"] == 0:
        print("nothing was compared", file=sys.stderr)
    return 1 if comparison.differences or comparison.counts["values"] == 0 else 0


if __name__ == "__main__":
    sys.exit(main())

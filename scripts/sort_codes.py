#!/usr/bin/env python3
"""Reads the sort codes of every character from an Access file and prints them as C++ rows.

    scripts/sort_codes.py FILE.mdb > codes.txt

The file is one that the engine itself has written (Jet 4 or ACE), with a table whose first two
columns are a number and a text and whose text has an ascending index. It should hold every character
alone in a row and, for the blank, a text that starts with one. The keys of the index stand beside the
texts; the weights, accents and marks of a character are those in the key of the text that has only
this one. src/platform/access/format/sort_codes.h describes the rows.
"""

import collections
import struct
import sys

PAGE = 4096
LAST = 0xFFFF
# Not in any row of such a file, but in names that the engine itself keeps under an index.
SEEN_ELSEWHERE = {0x0003: "'05"}
KANA = {bytes.fromhex("0101FF0280FF8000"): "k", bytes.fromhex("0101A0FF0280FF8000"): "s"}


def decode(stored):
    """The UTF-16 units of a text, which may be compressed."""
    if stored[:2] == b"\xff\xfe" and len(stored) > 2:
        units, compressed, at = bytearray(), True, 2
        while at < len(stored):
            if stored[at] == 0 and compressed:
                compressed, at = False, at + 1
            elif compressed:
                units += bytes((stored[at], 0))
                at += 1
            elif stored[at:at + 2] == b"\0":
                break
            else:
                units += stored[at:at + 2]
                at += 2
        stored = bytes(units)
    return struct.unpack("<%dH" % (len(stored) // 2), stored[:len(stored) // 2 * 2])


def index_entries(page):
    """Key, page and slot of each entry of a leaf."""
    shared = struct.unpack_from("<H", page, 24)[0]
    first, start = None, 0
    for bit in range(8 * (480 - 27)):
        if page[27 + bit // 8] >> bit % 8 & 1:
            entry = page[480 + start:480 + bit]
            if first is None:
                first = entry
            else:
                entry = first[:shared] + entry
            yield entry[:-4], int.from_bytes(entry[-4:-1], "big"), entry[-1]
            start = bit


def fields(data, page, slot):
    """The number and the text of a row; no text when it is null."""
    at = page * PAGE
    start = struct.unpack_from("<H", data, at + 14 + 2 * slot)[0]
    if start & 0xC000:
        return None, None
    end = PAGE if slot == 0 else struct.unpack_from("<H", data, at + 12 + 2 * slot)[0] & 0x1FFF
    row = data[at + start:at + end]
    number = struct.unpack_from("<i", row, 2)[0]
    tail = len(row) - (struct.unpack_from("<H", row, 0)[0] + 7) // 8
    if struct.unpack_from("<H", row, tail - 2)[0] == 0:
        return number, None
    end, start = struct.unpack_from("<2H", row, tail - 6)
    return number, decode(row[start:end])


def read_keys(path):
    """A dictionary from texts to the bytes of their keys, after the flag."""
    with open(path, "rb") as file:
        data = file.read()
    leaves = collections.defaultdict(list)
    for page in range(len(data) // PAGE):
        if data[page * PAGE] == 4:
            leaves[struct.unpack_from("<I", data, page * PAGE + 4)[0]].append(page)
    keys = {}
    for page in max(leaves.values(), key=len):
        for key, row_page, slot in index_entries(data[page * PAGE:(page + 1) * PAGE]):
            number, text = fields(data, row_page, slot)
            if text and key[:1] == b"\x7f" and key[1:] != struct.pack(">I", number ^ 0x80000000):
                keys[text] = key[1:]
    return keys


# The codes of a character: its weights and accents as bytes, a letter for kana, a mark's code.
Codes = collections.namedtuple("Codes", "weights accents kana mark")


def parse(key):
    """The codes of the character whose key, alone, is this one."""
    end = key.index(1)
    weights, rest = key[:end], key[end + 1:]
    if rest[:4] == b"\1\1\1\x80":
        return Codes(weights, b"", "", "%02X" % rest[6])
    # An accent that follows a weight of one byte, itself 01.
    if rest[0] == 1 and rest not in KANA:
        weights, rest = weights + b"\1", rest[1:]
    end = next(i for i, byte in enumerate(rest) if byte < 2)
    accents, rest = rest[:end], rest[end:]
    if rest != b"\0" and rest not in KANA:
        raise ValueError("a key of another form: " + key.hex())
    return Codes(weights, accents, KANA.get(rest, ""), "")


def count_up(weights, step):
    """The weights with the last two bytes counted up; 00 and 01 are no weights."""
    if len(weights) < 2 or weights[-1] + step > 0xFF and len(weights) == 1:
        return None
    low = weights[-1] - 2 + step
    high = weights[-2] + low // 254
    return weights[:-2] + bytes((high, low % 254 + 2)) if high <= 0xFF else None


def words(codes, before):
    """All ways to write the codes of a character after another one, the shortest first."""
    if codes is None:
        return ["?"]
    if codes.mark:
        return ["'" + codes.mark]
    if not codes.weights and not codes.accents:
        return ["-"]
    end = ("." + codes.accents.hex().upper() if codes.accents else "") + codes.kana
    found = [codes.weights.hex().upper() + end]
    if before is not None and before.weights and codes.weights:
        if before.weights == codes.weights:
            found.insert(0, "=" + end)
        for step in range(1, 16):
            if count_up(before.weights, step) == codes.weights:
                found.insert(0, "+" + ("%X" % step if step > 1 else "") + end)
    return found


def compress(sequence):
    """Words for a list of codes, with repetitions of the last one to eight words as @words*times."""
    plain = []
    before = None
    for codes in sequence:
        plain.append(words(codes, before)[0])
        before = codes
    result, at = [], 0
    while at < len(plain):
        best = None
        for size in range(1, min(8, at) + 1):
            times = 0
            while plain[at + times * size:at + (times + 1) * size] == plain[at - size:at]:
                times += 1
            saved = sum(len(w) + 1 for w in plain[at:at + times * size]) - len("@1*%d " % times)
            if times and saved > 0 and (best is None or saved > best[0]):
                best = saved, size, times
        if best is None:
            result.append((plain[at], 1))
            at += 1
        else:
            result.append(("@%d*%d" % best[1:], best[1] * best[2]))
            at += best[1] * best[2]
    return result


def main():
    keys = read_keys(sys.argv[1])
    codes = {text[0]: parse(key) for text, key in keys.items() if len(text) == 1 and text != (0x20,)}
    text, key = next((t, k) for t, k in keys.items() if t[0] == 0x20 and t[1:2] == (0x61,))
    codes[0x20] = Codes(key[:key.index(codes[0x61].weights)], b"", "", "")
    for first in sorted(SEEN_ELSEWHERE):
        print('    {0x%04X, "%s"},' % (first, SEEN_ELSEWHERE[first]))
    first, known = 0x20, [codes.get(c) for c in range(LAST + 1)]
    while first <= LAST:
        # As far as a page of characters goes, or a long run that starts in it.
        last = first | 0xFF
        while last < LAST and words(known[last + 1], known[last])[0] == words(
                known[last], known[last - 1])[0]:
            last += 1
        row = compress(known[first:last + 1])
        if {word for word, _ in row} - {"?"} and not (row[0][0] == "?" and len(row) <= 2):
            emit(first, " ".join(word for word, _ in row))
        first = last + 1


def emit(first, text):
    lines, line = [], ""
    for word in text.split(" "):
        if len(line) + len(word) > 82:
            lines.append(line)
            line = ""
        line += word + " "
    lines.append(line.rstrip())
    print('    {0x%04X, "%s"},' % (first, '"\n             "'.join(lines)))


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""Holds the lines of the command sdblk against the schemas that it prints.

    check_schema.py lines SDBLK PATH...   every line of the files, of all verbs, is valid
    check_schema.py damaged SDBLK FILE    so is every line of damaged copies of a volume, and of
                                          volumes of any blockettes with any fields
    check_schema.py faults SDBLK FILE     lines with a fault put in are refused

PATH is a file or a folder.  Without one, lines reads the folder that TARVIK_TEST_VOLUMES names, and
ends with 77 where that is not set."""

import copy
import json
import os
import random
import struct
import subprocess
import sys
import tempfile
from concurrent.futures import ProcessPoolExecutor
from pathlib import Path

from jsonschema import Draft202012Validator

PROCESSES = 2
SKIPPED = 77
# How the verbs are asked.  Lines with raw bytes are lines without, and more.
RUNS = (["blocks", "--raw"], ["blocks"], ["volumes"], ["stations"], ["segments"])
# Read, unreadable, damaged.
OUTCOMES = (0, 1, 3)


def validator_of(sdblk, verb):
    text = subprocess.run([sdblk, verb, "--schema"], check=True, capture_output=True).stdout
    schema = json.loads(text)
    Draft202012Validator.check_schema(schema)
    return Draft202012Validator(schema)


def lines_of(sdblk, run, paths):
    done = subprocess.run([sdblk, *run, *paths], capture_output=True)
    if done.returncode not in OUTCOMES or done.stderr:
        raise RuntimeError(f"sdblk {run}: status {done.returncode}, {done.stderr[:500]!r}")
    # Other characters than LF end lines for str.splitlines.
    return [json.loads(line) for line in done.stdout.decode("utf-8").split("\n")[:-1]]


# ---- every line is valid ----


def check_run(sdblk, run, paths):
    """The number of lines, and what is wrong with the first ten that are not valid."""
    validator = validator_of(sdblk, run[0])
    faults = []
    lines = lines_of(sdblk, run, paths)
    for line in lines:
        error = next(validator.iter_errors(line), None)
        if error is not None and len(faults) < 10:
            faults.append(f"{run}: {list(error.absolute_path)}: {error.message[:300]}")
    return len(lines), faults


def files_of(paths):
    for path in map(Path, paths):
        yield from sorted(p for p in path.rglob("*") if p.is_file()) if path.is_dir() else [path]


def shares_of(files):
    """The files in shares of about the same size, the largest first."""
    shares = [[] for _ in range(4 * PROCESSES)]
    for number, file in enumerate(sorted(files, key=lambda f: -f.stat().st_size)):
        shares[number % len(shares)].append(str(file))
    return [share for share in shares if share]


def check_lines(sdblk, paths, runs=RUNS):
    shares = shares_of(files_of(paths))
    with ProcessPoolExecutor(PROCESSES) as pool:
        checks = [pool.submit(check_run, sdblk, run, share) for run in runs for share in shares]
        results = [check.result() for check in checks]
    faults = [fault for _, found in results for fault in found]
    count = sum(lines for lines, _ in results)
    print("\n".join(faults + [f"{count} lines, {len(faults)} faults"]))
    return 0 if count > 0 and not faults else 1


# ---- volumes of any content ----

# Some are unknown there.
CONTROL_TYPES = (
    *(5, 8, 10, 11, 12, 30, 31, 32, 33, 34, 35, 41, 42, 43, 44, 45, 46, 47, 48, 50, 51, 52, 53, 54),
    *(55, 56, 57, 58, 59, 60, 61, 62, 70, 71, 72, 73, 74, 77, 99, 100),
)
DATA_TYPES = (
    *(99, 100, 200, 201, 300, 310, 320, 390, 395, 400, 405, 500, 1000, 1001, 2000),
    *(34, 55, 60, 1500, 4000),
)
# What fields are made of: small numbers, times, texts, nothing.
PIECES = (
    *(b"0", b"1", b"2", b"0001", b"01", b" ", b"~", b"~~", b"2020,001~", b"1.5E+00", b"-1E+400"),
    *(b"+1.00000E-03", b"A", b"BHZ", b"x\xe9", b"\xc3\xa9", b'"\\', b"\x01", b"\n", b"\0"),
)
RECORD = 512


def any_fields(rng, size):
    body = b""
    while len(body) < size:
        body += rng.choice(PIECES)
    return body[:size]


def any_control_records(rng, first_number):
    payload = b""
    for _ in range(40):
        body = any_fields(rng, rng.choice((0, 3, 10, 40, 90, 300)))
        payload += b"%03d%04d" % (rng.choice(CONTROL_TYPES), 7 + len(body)) + body
    size = RECORD - 8
    pieces = [payload[i : i + size] for i in range(0, len(payload), size)]
    flags = [b"A "] + [b"A*"] * (len(pieces) - 1)
    return b"".join(
        b"%06d" % (first_number + i) + flag + piece.ljust(size)
        for i, (flag, piece) in enumerate(zip(flags, pieces))
    )


def any_data_record(rng, number):
    order = rng.choice("<>")
    year = rng.choice((1900, 2021, 2100))
    day, hour, ticks = rng.randint(1, 366), rng.randint(0, 23), rng.choice((0, 9999, 65535))
    time = struct.pack(order + "HHBBBBH", year, day, hour, 59, 60, 0, ticks)
    rate = rng.randint(-20, 20), rng.randint(-3, 3)
    flags = rng.randrange(256), 0, 0
    correction = rng.randint(-9999, 9999)
    counts = struct.pack(
        order + "HhhBBBBiHH", rng.randint(0, 9), *rate, *flags, 3, correction, 0, 48
    )
    record = b"%06dD AB   00BHZXX" % number + time + counts
    for _ in range(3):
        body = rng.randbytes(rng.choice((0, 4, 20))) + any_fields(rng, rng.choice((0, 30)))
        after = len(record) + 4 + len(body)
        record += struct.pack(order + "HH", rng.choice(DATA_TYPES), after) + body
    return record.ljust(RECORD, b"\0")


def any_volume(rng):
    volume = any_control_records(rng, 1)
    for _ in range(10):
        volume += any_data_record(rng, len(volume) // RECORD + 1)
    return volume


def damaged(rng, volume):
    copy_of = bytearray(volume)
    for _ in range(rng.choice((1, 5, 50))):
        at = rng.randrange(len(copy_of))
        how = rng.randrange(4)
        if how == 0:
            copy_of[at] = rng.randrange(256)
        elif how == 1:
            copy_of[at : at + 1] = rng.randbytes(rng.randint(1, 40))
        elif how == 2:
            del copy_of[at : at + rng.choice((1, 7, 600))]
        else:
            copy_of[at : at + 6] = rng.choice((b"      ", b"~~~~~~", b"999999", b"000000"))
        copy_of = copy_of or bytearray(b"x")
    return bytes(copy_of[: rng.choice((len(copy_of), rng.randint(1, len(copy_of))))])


def write_volumes(folder, file):
    """Files of the same bytes in every run."""
    rng = random.Random(1615875352)
    volume = Path(file).read_bytes()
    for number in range(6):
        (folder / f"damaged-{number}").write_bytes(damaged(rng, volume))
        (folder / f"any-{number}").write_bytes(any_volume(rng))
    (folder / "empty").write_bytes(b"")


def check_damaged(sdblk, file):
    with tempfile.TemporaryDirectory() as folder:
        write_volumes(Path(folder), file)
        return check_lines(sdblk, [folder])


# ---- lines with a fault are refused ----

# What a verb's lines can be.
KINDS_OF_VERBS = {
    "blocks": ("volume", "blockette", "record", "skip", "note", "end", "error"),
    "volumes": ("volume", "gone", "error"),
    "stations": ("epoch", "error"),
    "segments": ("segment", "error"),
}
KINDS = {(verb, kind) for verb, kinds in KINDS_OF_VERBS.items() for kind in kinds}
# Keys of a line that need not stand there.
OPTIONAL = {"refs", "raw", "block", "field"}
# Keys whose texts are times.
TIMES = {"start", "end", "data_start", "data_end", "modified", "station_start", "station_end"}


def wrong_for(value):
    """Of no type that a value of this type may have."""
    return "wrong" if isinstance(value, (dict, list)) else {"wrong": 1}


def objects_in(value, path=()):
    """All objects in a value, with their paths."""
    if isinstance(value, dict):
        yield path, value
    items = value.items() if isinstance(value, dict) else enumerate(value)
    for key, inner in items:
        if isinstance(inner, (dict, list)):
            yield from objects_in(inner, (*path, key))


def at(value, path):
    for key in path:
        value = value[key]
    return value


def faults_of(line):
    """(What is wrong, the line with it), one fault after the other."""

    def changed(path, change):
        other = copy.deepcopy(line)
        change(at(other, path))
        return other

    for path, thing in objects_in(line):
        for key, value in thing.items():
            where = "/".join(map(str, (*path, key)))

            def put(other, key=key, value=value):
                other[key] = wrong_for(value)

            yield f"{where} of a wrong type", changed(path, put)
            if isinstance(value, list) and value:

                def put_element(other, key=key, value=value):
                    other[key][-1] = wrong_for(value[-1])

                yield f"{where} with a wrong element", changed(path, put_element)
            if key in TIMES and isinstance(value, str):

                def cut(other, key=key):
                    other[key] = other[key][:-1]

                yield f"{where} without a Z", changed(path, cut)
        if "fields" in path or path[-1:] == ("refs",):
            yield f"{path} with a key too many", changed(path, lambda o: o.update(unheard_of=1))
        elif path != ("notes",):
            for key in thing.keys() - OPTIONAL:
                yield f"no {key} in {path}", changed(path, lambda o, key=key: o.pop(key))
    if "type" in line:
        yield "fields of another type", {**line, "type": 34 if line["type"] != 34 else 50}
    if "why" in line:
        yield "a cause that is none", {**line, "why": "mood"}
    yield "a kind that is none", {**line, "kind": "what"}


def sorts_of(line):
    yield line["kind"], line.get("type"), line.get("why")
    for chained in line["blockettes"] if line["kind"] == "record" else ():
        yield "chained", chained["type"], None


def different_lines(lines):
    """A line of each kind, of each type of blockette, and of each cause."""
    seen = set()
    for line in lines:
        if not seen.issuperset(sorts_of(line)):
            seen.update(sorts_of(line))
            yield line


def lines_of_every_sort(sdblk, run, file):
    with tempfile.TemporaryDirectory() as folder:
        write_volumes(Path(folder), file)
        lines = lines_of(sdblk, run, [file, folder, folder + "/none"])
        if run == ["volumes"]:
            gone = {"kind": "volume", "file": folder + "/gone", "bytes": 1, "modified": None}
            known = Path(folder, "known")
            known.write_text(json.dumps(gone, separators=(",", ":")) + "\n")
            lines += lines_of(sdblk, [*run, "--known", str(known)], [folder])
        return different_lines(lines)


def check_faults(sdblk, file):
    tried, missed = 0, []
    kinds = set()
    for run in RUNS:
        validator = validator_of(sdblk, run[0])
        for line in lines_of_every_sort(sdblk, run, file):
            kinds.add((run[0], line["kind"]))
            if not validator.is_valid(line):
                missed.append(f"{run}: a sound line of kind {line['kind']} is refused")
            for what, wrong in faults_of(line):
                tried += 1
                if validator.is_valid(wrong):
                    missed.append(f"{run}: {line['kind']} {line.get('type', '')}: {what}")
    missed += [f"no line of kind {kind} in {verb}" for verb, kind in KINDS - kinds]
    print("\n".join(missed[:40] + [f"{tried} faults, {len(missed)} not seen"]))
    return 0 if tried > 0 and not missed else 1


def main(what, sdblk, *paths):
    if what == "lines":
        folder = os.environ.get("TARVIK_TEST_VOLUMES")
        if not paths and not folder:
            return SKIPPED
        # Lines with raw bytes are enough.
        return check_lines(sdblk, paths or [folder], RUNS if paths else RUNS[:1] + RUNS[2:])
    return {"damaged": check_damaged, "faults": check_faults}[what](sdblk, *paths)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

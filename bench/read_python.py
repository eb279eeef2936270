"""Times the Python package on the volumes of scripts/bench.sh: read_python.py FOLDER [rounds]

The best of some rounds (9), in seconds of the process and of the clock.
"""

import sys
import time
from pathlib import Path

import sdblk


def best(work, rounds):
    """What work returns, and the least time that it took: of the process, of the clock."""
    process, clock = [], []
    for _ in range(rounds):
        at = time.process_time(), time.perf_counter()
        result = work()
        process.append(time.process_time() - at[0])
        clock.append(time.perf_counter() - at[1])
    return result, min(process), min(clock)


def report(title, unit, work, rounds):
    count, process, clock = best(work, rounds)
    print(
        f"{title:36} {count:9} {unit:11} {process:7.3f} s {count / process / 1e6:6.2f} M/s"
        f"   clock {clock:7.3f} s {count / clock / 1e6:6.2f} M/s"
    )


def count_blocks(path):
    with sdblk.open(path) as vol:
        return sum(1 for _ in vol)


def count_with_fields(path):
    with sdblk.open(path) as vol:
        return sum(1 for block in vol if block.fields is not None)


def main():
    folder = Path(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 9
    records, metadata = folder / "A.seed", folder / "C.seed"
    report("records of A", "records", lambda: len(sdblk.records(records)), rounds)
    report("blocks of A", "records", lambda: count_blocks(records), rounds)
    report("blocks of C", "blockettes", lambda: count_blocks(metadata), rounds)
    report("blocks of C, and their fields", "blockettes", lambda: count_with_fields(metadata), rounds)


main()

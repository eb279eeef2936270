"""The table of records."""

from datetime import datetime

import numpy as np
import pytest

import sdblk
from making import LENGTH, data, data_only, dataless, rate, timing


def one(*args, **options):
    [row] = sdblk.records(data(*args, **options))
    return row


def test_a_row_has_what_the_header_says():
    volume = dataless() + data(7, blockettes=[data_only(order=0), timing(80, 0)], order="<", letter="Q")
    table = sdblk.records(volume)
    assert table.shape == (1,)
    row = table[0]
    assert row["offset"] == 3 * LENGTH
    assert row["length"] == LENGTH
    assert row["sequence"] == 7
    assert (row["network"], row["station"], row["location"], row["channel"]) == (
        "XX",
        "DYNGA",
        "00",
        "BHZ",
    )
    assert row["type"] == "Q"
    assert row["start"] == np.datetime64("2021-03-16T06:15:52.600000000")
    assert row["samples"] == 100
    assert row["rate"] == 20.0
    assert row["encoding"] == 3
    assert not row["big_endian"]
    assert row["timing_quality"] == 80
    assert row["data_offset"] == LENGTH // 2


def test_types_of_the_columns():
    dtype = sdblk.records(b"").dtype
    assert sdblk.records(b"").shape == (0,)
    assert dtype["start"] == np.dtype("datetime64[ns]")
    assert dtype["station"] == np.dtype("U5")
    assert dtype["rate"] == np.dtype("float64")
    assert dtype.names[:3] == ("offset", "length", "sequence")


def test_row_without_a_chain():
    row = one(1, station="A", location="", network="")
    assert (row["station"], row["location"], row["network"]) == ("A", "", "")
    assert (row["encoding"], row["timing_quality"]) == (-1, -1)


def test_blanks_in_codes_go():
    assert one(1, station=" AB ")["station"] == "AB"


def test_sequence_without_a_number_is_below_0():
    volume = b" " * 6 + data(1)[6:]
    assert sdblk.records(volume)[0]["sequence"] == -1


def test_start_takes_microseconds_and_correction():
    start = np.datetime64("2021-03-16T06:15:52.600000000")
    micros = np.timedelta64(1000, "ns")
    assert one(1, blockettes=[timing(0, -50)])["start"] == start - 50 * micros
    assert one(1, correction=-3)["start"] == start - 300 * micros
    assert one(1, correction=-3, activity=2)["start"] == start
    both = one(1, correction=1, blockettes=[timing(0, 99), timing(0, 5)])
    assert both["start"] == start + 199 * micros


@pytest.mark.parametrize("year", [1900, 1969, 1970, 2100])
def test_start_of_the_first_and_last_years(year):
    row = one(1, start=datetime(year, 12, 31, 23, 59, 59, 999900))
    assert row["start"] == np.datetime64(f"{year}-12-31T23:59:59.999900000")


@pytest.mark.parametrize(
    ("factor", "multiplier", "expected"),
    [(20, 1, 20.0), (20, -5, 4.0), (-10, 2, 0.2), (-10, -5, 0.02), (0, 5, 0.0), (5, 0, 0.0)],
)
def test_rate_follows_from_factor_and_multiplier(factor, multiplier, expected):
    assert one(1, factor=factor, multiplier=multiplier)["rate"] == expected


def test_rate_of_a_blockette_100_comes_first():
    assert one(1, blockettes=[rate(12.5), rate(99.0)])["rate"] == 12.5
    assert one(1, blockettes=[rate(-1.0)])["rate"] == 20.0
    assert one(1, blockettes=[rate(float("nan"))])["rate"] == 20.0


def test_timing_quality_is_the_lowest():
    assert one(1, blockettes=[timing(90, 0), timing(40, 0), timing(60, 0)])["timing_quality"] == 40


def test_a_blockette_ends_where_another_begins():
    record = bytearray(data(1, blockettes=[rate(12.5)]))
    record[50:52] = (54).to_bytes(2, "big")  # in the middle of the rate
    record[54:58] = (1000).to_bytes(2, "big") + bytes(2)
    assert sdblk.records(bytes(record))[0]["rate"] == 20.0


def test_file_and_buffer_give_the_same(demo):
    table = sdblk.records(demo)
    assert len(table) == 28
    assert np.array_equal(table, sdblk.records(demo.read_bytes()))
    assert table.flags.writeable


def test_missing_file_is_an_error(tmp_path):
    with pytest.raises(sdblk.Error, match="No such file"):
        sdblk.records(tmp_path / "none")


def test_rows_are_the_blocks(volume):
    with sdblk.open(volume) as vol:
        blocks = [block for block in vol if block.type == 99 and block.big_endian is not None]
    table = sdblk.records(volume)
    assert table["offset"].tolist() == [b.offset for b in blocks]
    assert table["length"].tolist() == [b.length for b in blocks]
    assert table["sequence"].tolist() == [-1 if b.sequence is None else b.sequence for b in blocks]
    for column, key in [("network", "net"), ("station", "sta"), ("location", "loc")]:
        assert table[column].tolist() == [b[key] for b in blocks]
    assert table["channel"].tolist() == [b["chan"] for b in blocks]
    assert table["type"].tolist() == [b.record_type for b in blocks]
    assert table["samples"].tolist() == [b["nsamp"] for b in blocks]
    offsets = [b["data_offset"] for b in blocks]
    there = [at if at < b.length else 0 for at, b in zip(offsets, blocks)]
    assert table["data_offset"].tolist() == there
    orders = [[c["order"] for c in b.chain if c.type == 1000 and "order" in c] for b in blocks]
    orders = [found[0] != 0 if found else b.big_endian for found, b in zip(orders, blocks)]
    assert table["big_endian"].tolist() == orders
    encodings = [[c["format"] for c in b.chain if c.type == 1000 and "format" in c] for b in blocks]
    assert table["encoding"].tolist() == [found[0] if found else -1 for found in encodings]
    qualities = [[c["qual"] for c in b.chain if c.type == 1001 and "qual" in c] for b in blocks]
    assert table["timing_quality"].tolist() == [min(found, default=-1) for found in qualities]


def test_rows_add_up_to_the_segments(volume):
    table = sdblk.records(volume)
    kept = table[(table["samples"] > 0) & (table["rate"] > 0) & ~np.isnat(table["start"])]
    segments = sdblk.segments(volume)
    assert len(kept) == sum(segment["records"] for segment in segments)
    assert kept["samples"].sum() == sum(segment["samples"] for segment in segments)
    starts = {segment["start"] for segment in segments}
    assert starts <= {f"{start}Z" for start in kept["start"].astype("M8[us]")}
    assert {segment["sample_rate"] for segment in segments} <= set(kept["rate"].tolist())

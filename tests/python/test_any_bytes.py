"""Bytes of any kind: nothing ends the process, and all ways of reading agree."""

import math
import pickle

from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import sdblk
from making import (
    LENGTH,
    blockette,
    channel,
    control,
    data,
    data_only,
    dataless,
    rate,
    timing,
    unit,
)

RECORDS = [
    dataless(),
    control(1, "V", blockette(10, " 2.408") + b" " * 20),
    control(2, "A", unit(1, "M/S", "Velocity") + unit(1, "M", "Again")),
    control(3, "S", channel() + channel(azimuth="12x.0")),
    control(4, "S", blockette(60, "02" + "0102" + "00010002" + "0202" + "00020009")),
    data(1, blockettes=[data_only(), timing(90, 3), rate(20.0)]),
    data(2, blockettes=[rate(-5.0), data_only()], order="<"),
    b"\0" * 64,
    b"garbage",
]

pieces = st.one_of(st.sampled_from(RECORDS), st.binary(max_size=64))


@st.composite
def volumes(draw):
    """Records, sound and cut, with bytes changed here and there."""
    volume = bytearray(b"".join(draw(st.lists(pieces, max_size=6))))
    for _ in range(draw(st.integers(0, 8)) if volume else 0):
        volume[draw(st.integers(0, len(volume) - 1))] = draw(st.integers(0, 255))
    return bytes(volume[: draw(st.integers(0, len(volume)))])


def check(volume):
    with sdblk.open(volume) as vol:
        blocks = list(vol)
    assert [b.number for b in blocks] == list(range(len(blocks)))
    assert vol.counts["blocks"] == len(blocks)
    for block in blocks:
        assert repr(pickle.loads(pickle.dumps(block)).fields) == repr(block.fields)
        for key in block.refs:
            block.ref(key)
    covered = sum(skip["length"] for skip in vol.skips if skip["why"] != "prefix")
    assert covered <= len(volume)
    records = [b for b in blocks if b.big_endian is not None]
    table = sdblk.records(volume)
    assert table["offset"].tolist() == [b.offset for b in records]
    assert all(math.isfinite(value) for value in table["rate"])
    try:
        with sdblk.open(volume, strict=True) as vol:
            for block in vol:
                pickle.loads(pickle.dumps(block))
                block.fields, block.chain, block.raw
    except sdblk.Error as error:
        assert error.messages or error.args[0]


@settings(max_examples=300, suppress_health_check=list(HealthCheck))
@given(volumes())
def test_volumes_with_faults(volume):
    check(volume)


@settings(max_examples=200)
@given(st.binary(max_size=3 * LENGTH))
def test_random_bytes(volume):
    check(volume)

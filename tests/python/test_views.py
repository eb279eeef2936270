"""The library's views, and blocks beside the lines of the view `blocks`."""

import datetime
import json
import math
import os
import subprocess

import numpy as np
import pytest

import sdblk
from making import data, data_only, dataless, rate, timing


@pytest.fixture
def file(tmp_path):
    def write(volume, name="vol.seed"):
        path = tmp_path / name
        path.write_bytes(volume)
        return path

    return write


# ---- blocks as the lines have them ----


def plain(value):
    """A value of a block as it stands in a line of JSON."""
    if isinstance(value, np.datetime64):
        text = np.datetime_as_string(value, unit="us")
        assert text.endswith("00"), "times have four decimals"
        return text[:-2] + "Z"
    if isinstance(value, np.ndarray):
        return [None if math.isnan(element) else plain(float(element)) for element in value]
    if isinstance(value, float) and not math.isfinite(value):
        return {math.inf: "Infinity", -math.inf: "-Infinity"}.get(value, "NaN")
    if isinstance(value, list):
        return [plain(element) for element in value]
    if isinstance(value, dict):
        return {key: plain(element) for key, element in value.items()}
    return value


def common(block):
    fields = plain(block.fields) if block.name is not None else None
    line = {"type": block.type, "name": block.name, "fields": fields}
    if block.refs:
        line["refs"] = block.refs
    return line


def line_of(block, file):
    head = {
        "file": str(file),
        "block": block.number,
        "sequence": block.sequence,
        "record_type": block.record_type,
        "offset": block.offset,
        "length": block.length,
    }
    if block.big_endian is None:
        return {
            "kind": "blockette",
            **head,
            "record_offset": block.record_offset,
            **common(block),
            "raw": as_text(block.raw),
        }
    order = "big" if block.big_endian else "little"
    chain = [
        {
            **common(chained),
            "offset": chained.offset - block.offset,
            "raw": chained.raw[:64].hex().upper(),
        }
        for chained in block.chain
    ]
    line = {"kind": "record", **head, "byte_order": order, "blockettes": chain, **common(block)}
    del line["type"], line["name"]
    return {**line, "raw": block.raw[:48].hex().upper()}


def as_text(raw):
    try:
        return raw.decode()
    except UnicodeDecodeError:
        return raw.decode("latin-1")


def upper_raw(line):
    """Hexadecimal digits are compared whatever their case."""
    if line["kind"] == "record":
        line["raw"] = line["raw"].upper()
        for chained in line["blockettes"]:
            chained["raw"] = chained["raw"].upper()
    return line


def keys_of(value):
    """The keys of dicts in dicts and lists, in their order."""
    if isinstance(value, dict):
        return [(key, keys_of(element)) for key, element in value.items()]
    if isinstance(value, list):
        return [keys_of(element) for element in value]
    return None


def test_blocks_are_the_lines_of_the_view(volume):
    lines = list(sdblk.blocks(volume, raw=True))
    with sdblk.open(volume) as vol:
        blocks = [line_of(block, volume) for block in vol]
    theirs = [upper_raw(line) for line in lines if line["kind"] in ("blockette", "record")]
    assert blocks == theirs
    for ours, line in zip(blocks, theirs):
        assert keys_of(ours["fields"]) == keys_of(line["fields"])
    drop = ("kind", "file")
    told = [{k: v for k, v in line.items() if k not in drop} for line in lines]
    kinds = [line["kind"] for line in lines]
    assert vol.skips == [one for one, kind in zip(told, kinds) if kind == "skip"]
    assert vol.notes == [one for one, kind in zip(told, kinds) if kind == "note"]
    assert vol.counts == told[-1]


# ---- the views ----


def test_views_are_those_of_the_command(volume):
    command = os.environ["SDBLK_COMMAND"]
    for verb in ("blocks", "volumes", "stations", "segments"):
        done = subprocess.run([command, verb, volume], stdout=subprocess.PIPE, check=False)
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        assert list(getattr(sdblk, verb)(volume)) == lines


def test_blocks_of_some_types(file):
    path = file(dataless() + data(4, blockettes=[data_only()]))
    kinds = [line["kind"] for line in sdblk.blocks(path, types="A")]
    assert kinds == ["volume", "blockette", "blockette", "end"]
    kinds = [line["kind"] for line in sdblk.blocks(path, blockettes=[1000])]
    assert kinds == ["volume", "record", "end"]


def test_stations(file):
    [epoch] = sdblk.stations(file(dataless()))
    assert epoch["kind"] == "epoch"
    assert (epoch["network"], epoch["station"], epoch["location"]) == ("XX", "DYNGA", "00")
    assert epoch["channel"] == "BHZ"
    assert epoch["latitude"] == 64.5
    assert epoch["units"] == "M/S"
    assert epoch["start"] == "2020-01-01T00:00:00.0000Z"
    assert epoch["end"] is None


@pytest.mark.parametrize(
    ("options", "count"),
    [
        ({"accept": "^XX_"}, 1),
        ({"accept": "^YY_"}, 0),
        ({"accept": ["^YY_", "BHZ_00$"]}, 1),
        ({"reject": "DYNGA"}, 0),
        ({"end": "2019-12-31"}, 0),
        ({"end": datetime.date(2020, 1, 1)}, 1),
        ({"end": datetime.datetime(2019, 12, 31, 23, 59, 59, 999900)}, 0),
        ({"start": np.datetime64("2030-01-01T00:00:00")}, 1),
    ],
)
def test_choice_of_stations(file, options, count):
    assert len(sdblk.stations(file(dataless()), **options)) == count


def test_a_pattern_or_time_with_a_fault_is_refused(file):
    path = file(dataless())
    with pytest.raises(ValueError, match=r"^'\(': "):
        sdblk.stations(path, accept="(")
    with pytest.raises(ValueError, match="yesterday"):
        sdblk.stations(path, start="yesterday")


def test_segments_of_several_files(file):
    paths = [
        file(data(1, blockettes=[data_only()]) + data(2, channel="BHN"), "a.mseed"),
        file(data(1, blockettes=[rate(50.0), timing(70, 12)]), "b.mseed"),
    ]
    segments = sdblk.segments(paths)
    assert [s["channel"] for s in segments] == ["BHN", "BHZ", "BHZ"]
    assert [s["file"] for s in segments] == [str(paths[0]), str(paths[0]), str(paths[1])]
    assert segments[2]["start"] == "2021-03-16T06:15:52.600012Z"
    assert segments[2]["end"] == "2021-03-16T06:15:54.580012Z"
    assert segments[2]["sample_rate"] == 50.0
    assert segments[2]["timing_quality"] == 70


def test_volumes(file):
    [volume] = sdblk.volumes(file(dataless()))
    assert volume["content"] == "dataless"
    assert (volume["stations"], volume["channels"], volume["epochs"]) == (1, 1, 1)


@pytest.mark.parametrize("view", [sdblk.blocks, sdblk.stations, sdblk.segments, sdblk.volumes])
def test_a_file_that_cannot_be_read_is_an_error(view, tmp_path):
    with pytest.raises(sdblk.Error, match="No such file") as caught:
        list(view(tmp_path / "none"))
    assert caught.value.file == str(tmp_path / "none")


def test_a_path_is_taken_in_any_form(file):
    path = file(dataless())
    assert sdblk.volumes(str(path)) == sdblk.volumes(path) == sdblk.volumes([path])
    with pytest.raises(TypeError):
        sdblk.volumes(5)


@pytest.mark.parametrize("length", [0, 63, 100, 262144])
def test_record_length_must_be_possible(file, length):
    path = file(dataless())
    with pytest.raises(ValueError, match="power of two"):
        sdblk.volumes(path, record_length=length)


@pytest.mark.parametrize("view", [sdblk.stations, sdblk.segments, sdblk.volumes, sdblk.blocks])
@pytest.mark.parametrize("source", [b"", b"vol.seed", bytearray(b"x"), memoryview(b"x")])
def test_bytes_are_no_files(view, source):
    with pytest.raises(TypeError, match="bytes are for sdblk.open"):
        list(view(source))

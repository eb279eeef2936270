"""Blocks: values, references, pickling."""

import copy
import math
import pickle

import numpy as np
import pytest

import sdblk
from making import LENGTH, blockette, channel, control, data, data_only, dataless, unit


def read(volume, **options):
    with sdblk.open(volume, **options) as vol:
        return list(vol)


def test_fields_come_in_catalogue_order():
    block = read(dataless())[0]
    assert list(block) == ["uid", "name", "descr"]
    assert block.fields == {"uid": 1, "name": "M/S", "descr": "Velocity"}
    assert list(block) == list(sdblk.catalogue[34])


def test_a_block_says_what_and_where_it_is():
    blocks = read(dataless())
    assert [b.type for b in blocks] == [34, 34, 50, 52]
    assert [b.number for b in blocks] == [0, 1, 2, 3]
    assert [b.sequence for b in blocks] == [1, 1, 2, 3]
    assert [b.record_type for b in blocks] == ["A", "A", "S", "S"]
    assert [b.record_offset for b in blocks] == [0, 0, LENGTH, 2 * LENGTH]
    assert blocks[0].offset == 8
    assert blocks[0].length == 7 + 3 + 4 + 9
    assert blocks[1].offset == 8 + blocks[0].length
    assert blocks[0].name == "Units Abbreviation Blockette"
    assert blocks[0].big_endian is None
    assert blocks[0].chain == []


def test_mapping_access():
    block = read(dataless())[0]
    assert block["name"] == "M/S"
    assert block.get("name") == "M/S"
    assert block.get("nothing") is None
    assert block.get("nothing", 5) == 5
    assert "name" in block
    assert "nothing" not in block
    assert 5 not in block
    assert len(block) == 3
    assert dict(block) == block.fields
    assert list(block.items()) == [("uid", 1), ("name", "M/S"), ("descr", "Velocity")]
    assert list(block.keys()) == list(block)
    assert list(block.values()) == [1, "M/S", "Velocity"]
    with pytest.raises(KeyError, match="nothing"):
        block["nothing"]


def test_text_that_is_not_utf8_is_latin1():
    assert read(dataless())[1]["name"] == "\xb0C"


def test_text_that_is_utf8_is_kept():
    block = read(control(1, "A", blockette(34, "001µm~Länge~".encode())))[0]
    assert (block["name"], block["descr"]) == ("µm", "Länge")


def test_times():
    block = read(dataless())[3]
    assert block["time"] == np.datetime64("2020-01-01T00:00:00.000000")
    assert block["time"].dtype == np.dtype("datetime64[us]")
    assert block["endtime"] is None


def test_time_keeps_its_ten_thousandths():
    block = read(control(1, "S", channel(start="2020,366,23:59:59.1234")))[0]
    assert block["time"] == np.datetime64("2020-12-31T23:59:59.123400")


def test_time_of_the_year_nought_is_none():
    block = read(control(1, "S", channel(start="0000,001")))[0]
    assert block["time"] is None


def test_number_without_a_value_is_none():
    block = read(control(1, "S", channel(azimuth="     ")))[0]
    assert "azimuth" in block
    assert block["azimuth"] is None
    assert block["dip"] == -90.0


def test_absent_fields_have_no_keys():
    block = read(control(1, "A", blockette(34, "001M/S~")))[0]
    assert list(block) == ["uid", "name"]
    assert block.get("descr") is None


def test_strict_reading_takes_blank_numbers_for_nought():
    volume = control(1, "V", blockette(10, " 2.408") + b" " * 20)
    volume += control(2, "S", channel(azimuth="     "))
    assert read(volume, strict=True)[1]["azimuth"] == 0.0


def test_array_of_numbers_is_a_numpy_array():
    body = "01Filter~C001001" + "0003" + " 1.0000000E+00-2.5000000E-01 3.0000000E+02"
    block = read(control(1, "S", blockette(61, body)))[0]
    coefficients = block["coefs"]
    assert coefficients.dtype == np.float64
    assert coefficients.tolist() == [1.0, -0.25, 300.0]


def test_array_element_without_a_value_is_nan():
    body = "01Filter~C001001" + "0003" + " 1.0000000E+00" + " " * 14 + " 3.0000000E+02"
    coefficients = read(control(1, "S", blockette(61, body)))[0]["coefs"]
    assert coefficients[0] == 1.0
    assert math.isnan(coefficients[1])
    assert coefficients[2] == 300.0


def stages():
    """A unit, two responses, and a blockette 60 whose second stage names one that is not defined."""
    gain = "Gain~ 1.00000E+00 0.00000E+0000"
    return control(
        1,
        "A",
        blockette(48, "0001" + gain) + blockette(48, "0002" + gain),
    ) + control(2, "S", blockette(60, "02" + "0102" + "00010002" + "0202" + "00020009"))


def test_group_is_a_list_of_dicts_with_references_last():
    block = read(stages())[2]
    assert block["nstages"] == 2
    assert block["stages"] == [
        {"stage": 1, "nresps": 2, "resps": [1, 2], "refs": {"resps": [0, 1]}},
        {"stage": 2, "nresps": 2, "resps": [2, 9], "refs": {"resps": [1, None]}},
    ]
    assert block.refs == {}


def test_ref_of_a_repetition():
    block = read(stages())[2]
    assert [b.number for b in block.ref("stages[0].resps")] == [0, 1]
    assert block.ref("stages[1].resps")[1] is None
    for path in ["stages[2].resps", "stages[x].resps", "stages[0].nothing", "nothing[0].resps"]:
        with pytest.raises((KeyError, IndexError)):
            block.ref(path)


def test_ref_gives_the_block_that_defines_the_code():
    block = read(dataless())[3]
    assert block.refs == {"inst_gid": None, "sunits": 0, "cunits": 0, "df_did": None}
    assert block.ref("sunits")["name"] == "M/S"
    assert block.ref("inst_gid") is None
    with pytest.raises(KeyError, match="nothing"):
        block.ref("nothing")


def test_ref_leads_to_the_first_definition():
    volume = control(1, "A", unit(1, "M/S", "Velocity") + unit(1, "M", "Again")) + control(
        2, "S", channel()
    )
    block = read(volume)[2]
    assert block.refs["sunits"] == 0
    assert block.ref("sunits")["name"] == "M/S"


def test_ref_in_strict_reading():
    volume = control(1, "V", blockette(10, " 2.408") + b" " * 20)
    volume += control(2, "A", unit(1, "M/S", "Velocity")) + control(3, "S", channel())
    block = read(volume, strict=True)[2]
    assert block.refs["sunits"] == 1
    assert block.ref("sunits")["name"] == "M/S"


def test_type_that_the_catalogue_does_not_have():
    block = read(control(1, "S", blockette(98, "what")))[0]
    assert block.type == 98
    assert block.name is None
    assert block.fields == {}
    assert block.raw == b"0980011what"
    assert block


def test_data_record():
    volume = data(7, blockettes=[data_only()], order="<")
    block = read(volume)[0]
    assert block.type == 99
    assert block.record_type == "D"
    assert block.sequence == 7
    assert block.length == LENGTH
    assert block.big_endian is False
    assert block.raw == volume
    assert block["sta"] == "DYNGA"
    assert block["nsamp"] == 100
    assert block["time"] == np.datetime64("2021-03-16T06:15:52.600000")
    assert [b.type for b in block.chain] == [1000]
    only = block.chain[0]
    assert only["dlenp"] == 8
    assert only.offset == 48
    assert only.length == LENGTH - 48
    assert only.raw == volume[48:]


def test_repr_names_the_block():
    assert repr(read(dataless())[1]) == (
        "<sdblk.Block 34 'Units Abbreviation Blockette', number 1, at 31>"
    )


def same(a, b):
    """Whether two blocks are alike, NaN being like NaN."""
    names = [
        *("type", "name", "number", "sequence", "record_type", "record_offset", "offset"),
        *("length", "big_endian", "raw", "refs"),
    ]
    return (
        all(getattr(a, name) == getattr(b, name) for name in names)
        and repr(a.fields) == repr(b.fields)
        and len(a.chain) == len(b.chain)
        and all(same(x, y) for x, y in zip(a.chain, b.chain))
    )


def test_pickled_blocks_are_the_same(volume):
    with sdblk.open(volume) as vol:
        for block in vol:
            assert same(pickle.loads(pickle.dumps(block)), block)


def test_pickled_block_keeps_what_it_refers_to():
    block = pickle.loads(pickle.dumps(read(dataless())[3]))
    assert block.ref("sunits")["name"] == "M/S"
    assert block.ref("inst_gid") is None
    assert copy.deepcopy(block).ref("sunits")["name"] == "M/S"


@pytest.mark.parametrize("place", range(15))
def test_damaged_pickle_is_refused(place):
    function, state = read(data(1, blockettes=[data_only()]))[0].__reduce_ex__(2)[0:3:2]
    for wrong in [None, -1, b"\1", "x" * 70000, [None]]:
        damaged = list(state)
        damaged[place] = wrong
        block = function(sdblk.Block)
        try:
            block.__setstate__(tuple(damaged))
        except (ValueError, RuntimeError, TypeError, IndexError, OverflowError):
            continue
        try:
            repr(block), block.fields, block.chain, block.raw
        except ValueError as error:
            assert "damaged state" in str(error)


def test_blocks_are_kept_beyond_their_volume(demo):
    blocks = read(demo)
    with sdblk.open(demo) as vol:
        for kept, block in zip(blocks, vol):
            assert same(kept, block)

"""Volumes: what is opened, read, told and closed."""

import gc
import mmap
import os
import pathlib
import subprocess
import sys
import threading

import numpy as np
import pytest

import sdblk
from making import LENGTH, blockette, channel, control, data, data_only, dataless, unit


def types(source, **options):
    with sdblk.open(source, **options) as vol:
        return [block.type for block in vol]


@pytest.fixture
def path(tmp_path):
    path = tmp_path / "vol.seed"
    path.write_bytes(dataless())
    return path


class PathLike:
    def __init__(self, path):
        self.path = path

    def __fspath__(self):
        return str(self.path)


@pytest.mark.parametrize("strict", [False, True])
def test_every_kind_of_source(path, strict):
    volume = control(1, "V", blockette(10, " 2.408") + b" " * 20) + control(
        2, "A", unit(1, "M/S", "Velocity")
    )
    path.write_bytes(volume)
    sources = [str(path), path, PathLike(path), volume, bytearray(volume), memoryview(volume)]
    sources.append(np.frombuffer(volume, dtype=np.uint8))
    for source in sources:
        assert types(source, strict=strict, record_length=LENGTH) == [10, 34]
    with path.open("rb") as file, mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as mapped:
        assert types(mapped, strict=strict, record_length=LENGTH) == [10, 34]


def test_path_that_is_not_utf8(tmp_path):
    path = os.fsencode(tmp_path) + b"/vol\xff.seed"
    with open(path, "wb") as file:
        file.write(dataless())
    assert types(pathlib.Path(os.fsdecode(path))) == [34, 34, 50, 52]
    assert sdblk.open(os.fsdecode(path)).file == os.fsdecode(path)


@pytest.mark.parametrize("source", [None, 5, 1.5, ["a"]])
def test_other_sources_are_refused(source):
    with pytest.raises(TypeError):
        sdblk.open(source)


def test_path_with_a_nul_is_refused():
    with pytest.raises(ValueError):
        sdblk.open("a\0b")


def test_empty_sources():
    for source in (b"", bytearray(), memoryview(b"")):
        assert types(source) == types(source, strict=True) == []


def test_file_that_is_too_short_for_strict_reading(path):
    path.write_bytes(b"123456789")
    assert types(path) == []
    with pytest.raises(sdblk.Error, match="cannot be opened") as caught:
        sdblk.open(path, strict=True)
    assert caught.value.messages


@pytest.mark.parametrize("strict", [False, True])
def test_missing_file_is_an_error(tmp_path, strict):
    with pytest.raises(sdblk.Error, match="No such file or directory") as caught:
        sdblk.open(tmp_path / "none", strict=strict)
    assert caught.value.file == str(tmp_path / "none")
    assert caught.value.offset is None
    assert bool(caught.value.messages) == strict


@pytest.mark.parametrize("strict", [False, True])
def test_folder_is_an_error(tmp_path, strict):
    with pytest.raises(sdblk.Error):
        sdblk.open(tmp_path, strict=strict)


@pytest.mark.parametrize("length", [0, 63, 96, 262144])
def test_record_length_must_be_possible(path, length):
    with pytest.raises(ValueError, match="power of two"):
        sdblk.open(path, record_length=length)


def test_record_length_is_the_first_in_force():
    for length in (256, 512):
        with sdblk.open(data(1, length=600), record_length=length) as vol:
            assert next(vol).length == length
        [note] = vol.notes
        assert note["text"] == f"nothing confirms that the record has {length} bytes"


def test_a_volume_is_read_once(path):
    vol = sdblk.open(path)
    assert iter(vol) is vol
    assert next(vol).type == 34
    assert [block.type for block in vol] == [34, 50, 52]
    assert list(vol) == []


def test_closed_volume(path):
    vol = sdblk.open(path)
    assert not vol.closed
    next(vol)
    with vol:
        pass
    assert vol.closed
    vol.close()
    with pytest.raises(sdblk.Error, match="closed"):
        next(vol)
    assert vol.counts["blocks"] == 4
    assert vol.file == str(path)


def test_skips_and_notes():
    volume = control(1, "S", channel(azimuth="12x.0")) + control(2, "S", channel())
    volume += b"?" * 100 + control(3, "S", b"no blockette", continued=True)
    with sdblk.open(volume) as vol:
        assert [b.type for b in vol] == [52, 52]
    third = 2 * LENGTH + 100
    assert vol.skips == [
        {"offset": 2 * LENGTH, "length": 100, "why": "garbage"},
        {"offset": third + 8, "length": LENGTH - 8, "why": "prefix"},
    ]
    value, record = vol.notes
    assert value == {
        "why": "value",
        "offset": 8,
        "block": 0,
        "field": "azimuth",
        "text": "azimuth is not a number: '12x.0'",
    }
    assert (record["why"], record["offset"]) == ("unconfirmed", LENGTH)
    assert record.keys() == {"why", "offset", "text"}
    counts = vol.counts
    assert counts["records"] == 3
    assert counts["blocks"] == 2
    assert counts["counts"] == dict.fromkeys("UVATDRQM", 0) | {"S": 2}
    assert counts["sequence_breaks"] == 0
    assert counts["skipped_bytes"] == 100 + LENGTH - 8
    assert counts["padding_bytes"] == 0
    assert counts["notes"] == 2


# ---- strict reading ----


def sound():
    return control(1, "V", blockette(10, " 2.408") + b" " * 20) + control(
        2, "A", unit(1, "M/S", "Velocity")
    )


def test_strict_reading_of_a_sound_volume():
    with sdblk.open(sound(), strict=True) as vol:
        assert vol.strict
        assert [block.type for block in vol] == [10, 34]
    assert vol.counts["blocks"] == 2
    assert vol.counts["counts"]["A"] == 1
    assert vol.skips == vol.notes == vol.messages == []


def test_strict_reading_ends_at_the_first_fault():
    volume = sound() + control(3, "A", unit(1, "M", "Again")) + control(4, "S", channel())
    with sdblk.open(volume, strict=True, record_length=LENGTH) as vol:
        seen = []
        with pytest.raises(sdblk.Error) as caught:
            for block in vol:
                seen.append(block.type)
        assert seen == [10, 34]
        assert caught.value.offset == 2 * LENGTH + 8
        assert caught.value.file is None
        assert len(caught.value.messages) > 0
        assert list(vol) == []
    assert types(volume) == [10, 34, 34, 52]


def test_fault_that_would_end_the_program_is_an_error(capfd):
    volume = sound() + control(3, "S", channel(units="a1b"))
    with sdblk.open(volume, strict=True) as vol, pytest.raises(sdblk.Error) as caught:
        list(vol)
    assert any("non-digit" in line.lower() for line in caught.value.messages)
    assert capfd.readouterr() == ("", "")


def test_blockette_of_length_0_ends_strict_reading():
    volume = control(1, "V", blockette(10, " 2.408") + b" " * 20) + control(2, "S", b"0500000")
    with sdblk.open(volume, strict=True) as vol:
        assert next(vol).type == 10
        assert next(vol).length == 0
        with pytest.raises(sdblk.Error, match="length 0"):
            next(vol)


def test_warnings_are_kept_not_printed(capfd):
    record = bytearray(data(1, blockettes=[data_only()]))
    record[46:48] = (LENGTH - 2).to_bytes(2, "big")  # where no blockette has room
    with sdblk.open(bytes(record), strict=True) as vol:
        [block] = vol
    assert block.chain == []
    assert any("Bad blockette offset 254" in line for line in vol.messages)
    assert capfd.readouterr() == ("", "")


def test_error_can_be_pickled():
    import pickle

    error = pickle.loads(pickle.dumps(sdblk.Error("text", 5, ["one"], "file")))
    assert (error.offset, error.messages, error.file) == (5, ["one"], "file")
    assert str(error) == "file: text (at byte 5)\none"


# ---- lifetimes ----


def test_buffer_is_held_while_the_volume_is_open():
    buffer = bytearray(dataless())
    with sdblk.open(buffer) as vol:
        with pytest.raises(BufferError):
            buffer.clear()
        blocks = list(vol)
    buffer.clear()
    assert [b.type for b in blocks] == [34, 34, 50, 52]
    assert blocks[3].ref("sunits")["name"] == "M/S"
    assert blocks[0].raw[:3] == b"034"


def test_buffer_without_another_owner():
    vol = sdblk.open(bytes(bytearray(dataless() * 50)), record_length=LENGTH)
    gc.collect()
    assert sum(1 for _ in vol) == 200


@pytest.mark.parametrize("strict", [False, True])
def test_buffer_of_more_than_2_gib(path, strict):
    with path.open("r+b") as file:
        file.truncate(2**31 + LENGTH)
        mapped = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
    # Not read: to find that nothing follows takes seconds.
    with sdblk.open(mapped, strict=strict, record_length=LENGTH) as vol:
        assert vol.strict == strict
    mapped.close()


def test_blocks_outlive_volume_and_buffer():
    blocks = list(sdblk.open(bytearray(dataless() + data(4, blockettes=[data_only()]))))
    gc.collect()
    junk = [bytearray(b"\xff" * 1024) for _ in range(1000)]
    assert [b.type for b in blocks] == [34, 34, 50, 52, 99]
    assert blocks[3].ref("sunits")["descr"] == "Velocity"
    chained = blocks[4].chain[0]
    del blocks, junk
    gc.collect()
    assert chained["dlenp"] == 8
    assert len(chained.raw) == LENGTH - 48


def test_file_that_shrinks_is_an_error(tmp_path):
    path = tmp_path / "vol.mseed"
    path.write_bytes(b"".join(data(i % 1000000, blockettes=[data_only()]) for i in range(1, 20000)))
    vol = sdblk.open(path)
    next(vol)
    os.truncate(path, 4096)
    with pytest.raises(sdblk.Error, match="changed while it was read"):
        list(vol)


# ---- threads ----


def test_a_second_thread_is_refused(tmp_path):
    path = tmp_path / "vol.mseed"
    path.write_bytes(b"".join(data(i % 1000000, blockettes=[data_only()]) for i in range(1, 20000)))
    vol = sdblk.open(path)
    counts, refused = [], []

    def read():
        count = 0
        while True:
            try:
                next(vol)
                count += 1
            except StopIteration:
                break
            except sdblk.Error as error:
                assert "another thread" in str(error)
                refused.append(error)
        counts.append(count)

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sum(counts) == 19999


def test_two_hundred_volumes_on_eight_threads(tmp_path):
    paths = []
    for i in range(200):
        path = tmp_path / f"{i}.seed"
        records = b"".join(
            data(4 + k, station=f"S{i}", blockettes=[data_only()], samples=k) for k in range(50)
        )
        path.write_bytes(dataless() + records + b"?" * i)
        paths.append(path)

    def listing(path):
        with sdblk.open(path) as vol:
            found = [(b.type, b.offset, repr(b.fields), len(b.chain)) for b in vol]
        return found, vol.counts, vol.skips, sdblk.segments(path), len(sdblk.records(path))

    alone = [listing(path) for path in paths]
    together = [None] * len(paths)

    def work(first):
        for i in range(first, len(paths), 8):
            together[i] = listing(paths[i])

    threads = [threading.Thread(target=work, args=(i,)) for i in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert together == alone


# ---- memory ----


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * mmap.PAGESIZE


def test_ten_thousand_rounds_do_not_grow(path):
    def rounds(count):
        for i in range(count):
            with sdblk.open(path, strict=i % 2 == 1) as vol:
                try:
                    for block in vol:
                        block.fields
                        block.ref("sunits") if block.type == 52 else None
                except sdblk.Error:
                    pass

    rounds(1000)
    gc.collect()
    before, files = resident(), len(os.listdir("/proc/self/fd"))
    rounds(10000)
    gc.collect()
    assert resident() - before < 2 << 20
    assert len(os.listdir("/proc/self/fd")) == files


NO_MEMORY = """
import resource, sys
import sdblk
buffer = bytes(64 << 20)
used = int(open("/proc/self/statm").read().split()[0]) * resource.getpagesize()
resource.setrlimit(resource.RLIMIT_AS, (used + (48 << 20), -1))
blocks = []
try:
    with sdblk.open(sys.argv[1]) as vol:
        for block in vol:
            blocks.append(block)
except sdblk.Error as error:
    blocks.clear()
    sys.exit("memory ran out" not in str(error))
except MemoryError:
    sys.exit(3)
sys.exit(2)
"""


@pytest.mark.skipif(
    "libasan" in os.environ.get("LD_PRELOAD", ""),
    reason="AddressSanitizer has reserved its memory before the limit is set",
)
def test_lack_of_memory_is_an_error(tmp_path):
    path = tmp_path / "vol.mseed"
    # Records so long that memory runs out for one of them, and not for a small object of Python.
    record = data(1, blockettes=[data_only(131072)], length=131072)
    path.write_bytes(record * 300)
    done = subprocess.run(
        [sys.executable, "-c", NO_MEMORY, path], stderr=subprocess.PIPE, text=True, check=False
    )
    assert (done.returncode, done.stderr) == (0, "")


def test_volume_shows_what_it_reads(tmp_path):
    path = tmp_path / "vol.seed"
    path.write_bytes(dataless())
    assert repr(sdblk.open(path)) == f"<sdblk.Volume {str(path)!r}>"
    assert repr(sdblk.open(dataless())) == "<sdblk.Volume of bytes>"

"""What files hold, as the command sdblk writes it: the lines of the library's views as dicts."""

from __future__ import annotations

import datetime
import json
import os
from collections.abc import Iterable, Iterator
from typing import Any, Union

import numpy as np

from . import _sdblk

Path = Union[str, "os.PathLike[str]"]
Files = Union[Path, Iterable[Path]]
Patterns = Union[str, Iterable[str]]
Time = Union[str, datetime.date, np.datetime64, None]


def _paths(files: Files) -> Iterable[Path]:
    if isinstance(files, (bytes, bytearray, memoryview)):
        raise TypeError("files is a path or several; bytes are for sdblk.open and sdblk.records")
    return [files] if isinstance(files, (str, os.PathLike)) else files


def _patterns(patterns: Patterns) -> list[str]:
    return [patterns] if isinstance(patterns, str) else list(patterns)


def _time(time: Time) -> str | None:
    return None if time is None else str(time).replace(" ", "T")


def _read(view: _sdblk.Lines, files: Files) -> Iterator[dict[str, Any]]:
    for file in _paths(files):
        for line in view.read(file).splitlines():
            yield json.loads(line)


def blocks(
    files: Files,
    *,
    raw: bool = False,
    types: str = "",
    blockettes: Iterable[int] = (),
    record_length: int = 4096,
) -> Iterator[dict[str, Any]]:
    """Every blockette and data record, field by field, as `sdblk blocks` writes them.

    files is a path or several.  raw adds the blocks' bytes.  types (letters of record types) and
    blockettes (types of blockettes) choose blocks; without them all come.  record_length is the
    record length to try first, bytes.

    The text of one file's lines is in memory at a time; sdblk.open reads files of any size.
    Raises sdblk.Error for a file that cannot be read.
    """
    return _read(_sdblk.blocks(record_length, raw, types, list(blockettes)), files)


def stations(
    files: Files,
    *,
    accept: Patterns = (),
    reject: Patterns = (),
    start: Time = None,
    end: Time = None,
    record_length: int = 4096,
) -> list[dict[str, Any]]:
    """One dict a channel epoch, with everything that belongs to it, as `sdblk stations` writes them.

    files is a path or several.  accept and reject are POSIX extended regular expressions, one or
    several, searched in "NET_STA_CHA_LO", or "NET_STA_CHA" for an empty location: an epoch is taken
    when one of accept is found, or there is none, and none of reject.  start and end (UTC: a date,
    a datetime without time zone, a numpy.datetime64, or a text like "2021-03-16T06:15:00") choose
    epochs that end at start or after, or are open, and begin at end or before.

    Latitude, longitude, azimuth and dip are in degrees, elevation and depth in metres, sample_rate
    in samples a second; times are texts (UTC); None is what the volume does not say.
    Raises sdblk.Error for a file that cannot be read, ValueError for a pattern or time with a fault.
    """
    view = _sdblk.stations(
        record_length, _patterns(accept), _patterns(reject), _time(start), _time(end)
    )
    return list(_read(view, files))


def volumes(files: Files, *, record_length: int = 4096) -> list[dict[str, Any]]:
    """One dict a file, what it is and what it holds, as `sdblk volumes` writes them.

    files is a path or several.  Times are texts (UTC), sizes are in bytes.  Raises sdblk.Error for
    a file that cannot be read.
    """
    return list(_read(_sdblk.volumes(record_length), files))


def segments(files: Files, *, record_length: int = 4096) -> list[dict[str, Any]]:
    """One dict a continuous stretch of data, as `sdblk segments` writes them.

    files is a path or several; stretches do not go on from file to file.  start and end are texts
    (UTC, microseconds) of the first and the last sample, sample_rate is in samples a second, gap
    in seconds (below 0: an overlap; None for a channel's first), timing_quality in percent or None.
    Raises sdblk.Error for a file that cannot be read.
    """
    return list(_read(_sdblk.segments(record_length), files))

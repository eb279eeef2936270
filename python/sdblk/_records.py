"""The headers of data records as a table."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt

from . import _sdblk

# (name, format, offset); the rows are made by python/records.cpp.
_COLUMNS = [
    ("offset", "i8", 0),
    ("length", "i4", 24),
    ("sequence", "i4", 32),
    ("network", "U2", 48),
    ("station", "U5", 56),
    ("location", "U2", 76),
    ("channel", "U3", 84),
    ("type", "U1", 96),
    ("start", "M8[ns]", 8),
    ("samples", "i4", 28),
    ("rate", "f8", 16),
    ("encoding", "i2", 40),
    ("big_endian", "?", 44),
    ("timing_quality", "i2", 42),
    ("data_offset", "i4", 36),
]
_names, _formats, _offsets = (list(column) for column in zip(*_COLUMNS))
_DTYPE = np.dtype({"names": _names, "formats": _formats, "offsets": _offsets, "itemsize": 104})


def records(source: _sdblk._Source, *, record_length: int = 4096) -> npt.NDArray[Any]:
    """The headers of all data records of a volume, in their order.

    source is a path or an object with bytes, record_length the record length to try first, bytes.
    The result is a numpy structured array of one dimension, a row a data record:

        offset          int64            from the start of the volume, bytes
        length          int32            bytes
        sequence        int32            number of the record, -1 without one
        network         str, up to 2     codes, without blanks
        station         str, up to 5
        location        str, up to 2
        channel         str, up to 3
        type            str, 1           "D", "R", "Q" or "M"
        start           datetime64[ns]   time of the first sample, UTC, with the microseconds of
                                         blockette 1001 and a time correction that is not yet
                                         applied; NaT where the record has none
        samples         int32            number of samples
        rate            float64          samples a second: of blockette 100, else from factor and
                                         multiplier; 0 without one
        encoding        int16            code of blockette 1000, -1 without one
        big_endian      bool             whether the samples have the high byte first
        timing_quality  int16            percent, the lowest of blockettes 1001, -1 without one
        data_offset     int32            of the first sample from the record's start, bytes; 0
                                         where it has none

    Nothing else of the volume is decoded, and no Python object is made for a record.  The
    interpreter's lock is released.  Raises sdblk.Error for a volume that cannot be read.
    """
    return _sdblk.records(source, record_length).view(_DTYPE)

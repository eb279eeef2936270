"""Reads SEED volumes: headers, station metadata, and the headers of data records.

    with sdblk.open("vol.seed") as vol:
        for block in vol:
            print(block.type, block.name, block.fields)

Files are read whole: to the last byte, whatever they hold, and what was passed over or could not be
taken at its word is told in Volume.skips and Volume.notes.
"""

from collections.abc import Mapping as _Mapping

from ._catalogue import Definition, Field, catalogue
from ._error import Error
from ._records import records
from ._sdblk import Block, Volume, __version__, open
from ._views import blocks, segments, stations, volumes

_Mapping.register(Block)

__all__ = [
    "Block",
    "Definition",
    "Error",
    "Field",
    "Volume",
    "__version__",
    "blocks",
    "catalogue",
    "open",
    "records",
    "segments",
    "stations",
    "volumes",
]

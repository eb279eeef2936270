"""What the library knows of the SEED format."""

from __future__ import annotations

from collections.abc import Iterator, Mapping
from dataclasses import dataclass
from types import MappingProxyType
from typing import Any

from . import _sdblk

# In the order of the library's numbers, from -1 down.
_KINDS = (
    "integer",
    "code",
    "real",
    "text",
    "integers",
    "reals",
    "texts",
    "group",
    "codes",
)
_TIMES = ("TIME", "BTIME")


@dataclass(frozen=True)
class Field:
    """One field of a blockette."""

    key: str
    """Short name, unique among the fields beside it."""
    title: str
    """The field's name."""
    description: str
    """One sentence on what it holds, with the unit where it has one."""
    stype: str
    """How it is cut: "A", "D", "F" text of fixed width, "V" text up to a "~", "B" binary, "" for a group."""
    width: int
    """Characters or bytes; of "V" the most that the standard allows."""
    format: str
    """Picture ("####"), conversion word ("TIME", "UWORD"), or ""."""
    kind: str
    """"integer", "code", "real", "time", "text", "integers", "reals", "texts", "group" or "codes"."""
    count: str | None
    """Of an array or group: the key of the field that says how many elements there are."""
    refers: str | None
    """Of a code that refers to an abbreviation: the key of the field that defines such codes."""
    fields: Mapping[str, Field]
    """Of a group: the fields of a repetition, by key."""


@dataclass(frozen=True, repr=False)
class Definition(Mapping[str, Field]):
    """One type of blockette: a mapping of its fields by key, in their order."""

    type: int
    """SEED blockette type; 99 for the fixed section of a data record."""
    name: str
    description: str
    record_types: str
    """The letters of the records in which it stands."""
    fields: Mapping[str, Field]

    def __getitem__(self, key: str) -> Field:
        return self.fields[key]

    def __iter__(self) -> Iterator[str]:
        return iter(self.fields)

    def __len__(self) -> int:
        return len(self.fields)

    def __repr__(self) -> str:
        return f"<sdblk.Definition {self.type} {self.name!r}>"


def _fields(rows: tuple[tuple[Any, ...], ...]) -> Mapping[str, Field]:
    return MappingProxyType({row[0]: _field(row) for row in rows})


def _field(row: tuple[Any, ...]) -> Field:
    key, title, description, stype, width, format_, kind, count, refers, rows = row
    name = "time" if format_ in _TIMES else _KINDS[-kind - 1]
    return Field(
        key, title, description, stype, width, format_, name, count, refers, _fields(rows)
    )


def _definition(row: tuple[Any, ...]) -> Definition:
    type_, name, description, record_types, rows = row
    return Definition(type_, name, description, record_types, _fields(rows))


catalogue: Mapping[int, Definition] = MappingProxyType(
    {row[0]: _definition(row) for row in _sdblk.catalogue()}
)
"""The definitions by type of blockette, ascending."""

"""The exception of the package."""

from __future__ import annotations

from collections.abc import Sequence


class Error(Exception):
    """A volume cannot be opened or read on, or memory ran out.

    offset: where in the volume, bytes from its start, or None.
    messages: what the library said, oldest first.
    file: the path, or None for a buffer.
    """

    offset: int | None
    messages: list[str]
    file: str | None

    def __init__(
        self,
        text: str,
        offset: int | None = None,
        messages: Sequence[str] = (),
        file: str | None = None,
    ) -> None:
        super().__init__(text)
        self.offset = offset
        self.messages = list(messages)
        self.file = file

    def __str__(self) -> str:
        text = str(self.args[0])
        if self.file is not None:
            text = f"{self.file}: {text}"
        if self.offset is not None:
            text = f"{text} (at byte {self.offset})"
        return "\n".join([text, *self.messages])

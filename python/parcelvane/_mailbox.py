"""Mailboxes: messages streamed one at a time from an mbox file or a maildir."""

from __future__ import annotations

import os
from typing import Iterator, Union

from parcelvane._message import Message, parse


def mbox(path: Union[str, "os.PathLike[str]"], *, crlf: bool = True) -> Iterator[Message]:
    """Yields the messages of an mbox file in order, reading it line by line.

    A message starts at a line beginning with "From " that opens the file or follows an
    empty line; the separator line is not part of the message, nor is the empty line before
    the next one. A body line quoted as ">From " (any number of ">") loses one ">".
    """
    with open(path, "rb") as f:
        lines: list = []
        previous_empty = True
        started = False
        for line in f:
            if line.startswith(b"From ") and previous_empty:
                if started:
                    yield _finish(lines, crlf)
                lines = []
                started = True
                previous_empty = False
                continue
            if not started:
                if line.strip():
                    raise ValueError(f"{os.fspath(path)}: not an mbox file (no \"From \" line first)")
                continue
            stripped = line.lstrip(b">")
            if stripped is not line and len(stripped) < len(line) and stripped.startswith(b"From "):
                line = line[1:]
            lines.append(line)
            previous_empty = line in (b"\n", b"\r\n")
        if started:
            yield _finish(lines, crlf)


def _finish(lines: list, crlf: bool) -> Message:
    # The empty line before the next separator belongs to the mailbox.
    if lines and lines[-1] in (b"\n", b"\r\n"):
        lines = lines[:-1]
    return parse(b"".join(lines), crlf=crlf)


def maildir(path: Union[str, "os.PathLike[str]"], *, crlf: bool = True) -> Iterator[Message]:
    """Yields the messages of a maildir (its cur and new folders, names in order), one file at a time."""
    for sub in ("cur", "new"):
        folder = os.path.join(path, sub)
        if not os.path.isdir(folder):
            continue
        for name in sorted(os.listdir(folder)):
            if name.startswith("."):
                continue
            file = os.path.join(folder, name)
            if os.path.isfile(file):
                with open(file, "rb") as f:
                    yield parse(f.read(), crlf=crlf)

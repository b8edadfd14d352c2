"""The Pythonic layer: parse a message, read it, or compose one."""

from __future__ import annotations

import datetime as _datetime
import email.utils as _email_utils
import os
import re
from typing import Iterator, List, NamedTuple, Optional, Sequence, Tuple, Union

from parcelvane import _native


class Address(NamedTuple):
    """A mailbox: display name ("" when none) and address."""

    name: str
    address: str


class Group(NamedTuple):
    """A group of an address field ("Team: a@x, b@y;"), with its members."""

    name: str
    members: Tuple[Address, ...]


def _entries(raw) -> List[Union[Address, Group]]:
    out: List[Union[Address, Group]] = []
    for is_group, group_name, members in raw:
        mailboxes = tuple(Address(n, a) for n, a in members)
        if is_group:
            out.append(Group(group_name, mailboxes))
        else:
            out.extend(mailboxes)
    return out


class Part:
    """One part of a message's MIME tree (see ``Message.walk``)."""

    __slots__ = ("_core",)

    def __init__(self, core: _native.PartCore) -> None:
        self._core = core

    @property
    def content_type(self) -> str:
        """The type, lower case, such as "text/plain" (also for a part without Content-Type)."""
        return self._core.content_type

    @property
    def depth(self) -> int:
        """0 for the root part, 1 for its children, and so on."""
        return self._core.depth

    @property
    def is_multipart(self) -> bool:
        return self._core.children > 0 or self._core.content_type.startswith("multipart/")

    @property
    def filename(self) -> Optional[str]:
        """The decoded file name (Content-Disposition filename, else Content-Type name), or None."""
        return self._core.filename

    @property
    def is_attachment(self) -> bool:
        """An attachment as ``parcelvane show`` counts one: flagged by the library, or a leaf
        with a file name, an x-uuencode leaf or a leaf whose type is not text."""
        return self._core.is_attachment

    @property
    def transfer_encoding(self) -> str:
        """The Content-Transfer-Encoding, lower case; "" when absent."""
        return self._core.transfer_encoding

    @property
    def headers(self) -> List[Tuple[str, str]]:
        """The part's own header fields, (name, unfolded value), in order."""
        return self._core.headers()

    def decoded(self) -> bytes:
        """The body with its transfer encoding undone (base64, quoted-printable, uuencode)."""
        return self._core.decoded()

    def text(self) -> str:
        """The decoded body as text in its charset, line ends as "\\n"."""
        return self._core.text()

    def dispatch(self) -> _native.DispatchObject:
        """The part as a late-bound EMSMimePart object."""
        return self._core.dispatch()

    def __repr__(self) -> str:
        name = f" {self.filename!r}" if self.filename is not None else ""
        return f"<parcelvane.Part {self.content_type}{name}>"


_LINE_BREAK = re.compile(r"[\r\n]")
# What an address may not hold: control characters, blanks and the
# characters that would end or split it in a header.
_BAD_ADDRESS = re.compile(r'[\x00-\x20\x7f<>",;\\]|[^\x00-\x7f]')
_FIELD_NAME = re.compile(r"[!-9;-~]+")


def _check_text(what: str, value: str) -> str:
    if not isinstance(value, str):
        raise TypeError(f"{what} must be str, not {type(value).__name__}")
    if _LINE_BREAK.search(value):
        raise ValueError(f"{what} holds a line break (CR or LF): {value!r}")
    if "\x00" in value:
        raise ValueError(f"{what} holds a NUL character: {value!r}")
    value.encode("utf-8")  # lone surrogates: UnicodeEncodeError, a ValueError
    return value


def _address(what: str, value) -> Address:
    if isinstance(value, str):
        value = ("", value)
    name, address = value
    _check_text(f"{what} name", name)
    _check_text(f"{what} address", address)
    if not address or _BAD_ADDRESS.search(address):
        raise ValueError(f"{what} address is not a plain ASCII address: {address!r}")
    return Address(name, address)


def _address_list(what: str, values) -> List[Address]:
    if isinstance(values, (str, tuple)):
        values = [values]
    return [_address(what, v) for v in values]


def _read_input(data) -> bytes:
    if isinstance(data, (bytes, bytearray, memoryview)):
        return data
    if isinstance(data, os.PathLike) or (isinstance(data, str) and "\n" not in data):
        with open(data, "rb") as f:
            return f.read()
    if isinstance(data, str):
        return data.encode("utf-8", "surrogateescape")
    read = getattr(data, "read", None)
    if read is not None:
        content = read()
        if isinstance(content, str):
            raise TypeError("parse() needs a binary file object (open the file with 'rb')")
        return content
    raise TypeError(f"parse() takes bytes, str, a path or a binary file object, not {type(data).__name__}")


def parse(data: Union[bytes, bytearray, memoryview, str, "os.PathLike[str]", object], *, crlf: bool = True) -> "Message":
    """Parses a message from bytes, a str holding the message, a path (a PathLike, or a str
    without a line break) or a binary file object.

    As ``parcelvane show`` does, a byte order mark, an mbox "From " line and leading blank
    lines are skipped, and every bare LF becomes CR LF (``crlf=False`` turns that off: the
    library finds the structure of a message only at CR LF). Input that cannot be a message
    raises ValueError.
    """
    core = _native.MessageCore.parse(_read_input(data), crlf)
    return Message._from_core(core)


class Message:
    """A message, parsed (``parse``) or composed (``Message()``), with the same names for both.

    Composing::

        m = Message()
        m.subject = "Grüße"
        m.sender = ("Jürgen", "jm@example.org")
        m.to = [("Anna", "anna@example.com")]
        m.text = "Hallo!"
        m.add_attachment("report.pdf", pdf_bytes)
        raw = bytes(m)

    Every value reads back the same from ``parse(bytes(m))``; a CR or LF in a header value or
    a file name raises ValueError instead of becoming a new field.
    """

    def __init__(self) -> None:
        self._core: Optional[_native.MessageCore] = None
        self._composed = True
        self._subject = ""
        self._sender: Optional[Address] = None
        self._to: List[Address] = []
        self._cc: List[Address] = []
        self._text: Optional[str] = None
        self._html: Optional[str] = None
        self._date: Optional[_datetime.datetime] = None
        self._extra: List[Tuple[str, str]] = []
        self._attachments: List[Tuple[str, bytes, str]] = []

    @classmethod
    def _from_core(cls, core: _native.MessageCore) -> "Message":
        message = cls.__new__(cls)
        message._core = core
        message._composed = False
        return message

    # ------------------------------------------------------------ reading
    def _parsed(self) -> _native.MessageCore:
        if self._core is None:
            self._core = _native.MessageCore.parse(self._assemble(), False)
        return self._core

    def _composing(self, what: str) -> None:
        if not self._composed:
            raise AttributeError(f"a parsed message is read-only ({what}); compose with Message()")
        self._core = None

    @property
    def subject(self) -> str:
        """The subject, decoded ("" when there is none)."""
        if self._composed:
            return self._subject
        return self._parsed().subject()

    @subject.setter
    def subject(self, value: str) -> None:
        self._composing("subject")
        self._subject = _check_text("subject", value)

    @property
    def sender(self) -> Optional[Address]:
        """The first mailbox of From as (name, address); None when there is none."""
        if self._composed:
            return self._sender
        name, address = self._parsed().sender()
        if not name and not address:
            return None
        return Address(name, address)

    @sender.setter
    def sender(self, value) -> None:
        self._composing("sender")
        self._sender = None if value is None else _address("sender", value)

    @property
    def to(self) -> List[Union[Address, Group]]:
        """The To field's entries: Address, or Group with its members."""
        if self._composed:
            return list(self._to)
        return _entries(self._parsed().addresses("To"))

    @to.setter
    def to(self, values) -> None:
        self._composing("to")
        self._to = _address_list("to", values)

    @property
    def cc(self) -> List[Union[Address, Group]]:
        """The Cc field's entries: Address, or Group with its members."""
        if self._composed:
            return list(self._cc)
        return _entries(self._parsed().addresses("Cc"))

    @cc.setter
    def cc(self, values) -> None:
        self._composing("cc")
        self._cc = _address_list("cc", values)

    @property
    def date(self) -> Optional[_datetime.datetime]:
        """The Date field as a timezone-aware datetime, or None when absent or unreadable."""
        if self._composed and self._date is not None:
            return self._date
        text = self._parsed().field("Date")
        if not text:
            return None
        try:
            when = _email_utils.parsedate_to_datetime(text)
        except (TypeError, ValueError, IndexError):
            return None
        if when.tzinfo is None:  # "-0000": a time in UTC whose zone is not known
            when = when.replace(tzinfo=_datetime.timezone.utc)
        return when

    @date.setter
    def date(self, value: _datetime.datetime) -> None:
        self._composing("date")
        if value.tzinfo is None:
            raise ValueError("date needs a timezone-aware datetime")
        self._date = value

    @property
    def headers(self) -> List[Tuple[str, str]]:
        """Every header field of the message (and of its root part), one pair of
        (name, decoded value) per occurrence, in order."""
        return self._parsed().headers()

    def __getitem__(self, name: str) -> Optional[str]:
        """The first field named ``name`` (without regard to case), decoded; None when absent."""
        wanted = name.lower()
        for field, value in self.headers:
            if field.lower() == wanted:
                return value
        return None

    def get_all(self, name: str) -> List[str]:
        """Every occurrence of the field ``name``, decoded, in order."""
        wanted = name.lower()
        return [value for field, value in self.headers if field.lower() == wanted]

    def walk(self) -> Iterator[Part]:
        """Every part, depth first, children in order (nothing for a plain message)."""
        for core in self._parsed().parts():
            yield Part(core)

    @property
    def is_multipart(self) -> bool:
        """True when the root part is a multipart."""
        parts = self._parsed().parts()
        return bool(parts) and parts[0].content_type.startswith("multipart/")

    @property
    def is_mime(self) -> bool:
        """True when the message has a root part and no plain body (a MIME message)."""
        return self._parsed().is_mime()

    @property
    def text(self) -> Optional[str]:
        """The plain-text body, line ends as "\\n"; None when there is none."""
        if self._composed:
            return self._text
        return self._parsed().text()

    @text.setter
    def text(self, value: Optional[str]) -> None:
        self._composing("text")
        self._text = None if value is None else _body("text", value)

    @property
    def html(self) -> Optional[str]:
        """The HTML body, line ends as "\\n"; None when there is none."""
        if self._composed:
            return self._html
        return self._parsed().html()

    @html.setter
    def html(self, value: Optional[str]) -> None:
        self._composing("html")
        self._html = None if value is None else _body("html", value)

    @property
    def attachments(self) -> List[Part]:
        """The parts that are attachments, in tree order."""
        return [part for part in self.walk() if part.is_attachment]

    def add_attachment(self, filename: str, data: Union[bytes, bytearray, memoryview], content_type: Optional[str] = None) -> None:
        """Attaches ``data`` under ``filename``; the type follows the file's extension
        unless ``content_type`` ("type/subtype") is given."""
        self._composing("add_attachment")
        _check_text("filename", filename)
        if content_type is None:
            content_type = ""
        elif not re.fullmatch(r"[A-Za-z0-9!#$&^_.+-]+/[A-Za-z0-9!#$&^_.+-]+", content_type):
            raise ValueError(f"content_type must be type/subtype: {content_type!r}")
        self._attachments.append((filename, bytes(data), content_type))

    def add_header(self, name: str, value: str) -> None:
        """Adds a header field of the caller's; non-ASCII text is encoded."""
        self._composing("add_header")
        if not _FIELD_NAME.fullmatch(name):
            raise ValueError(f"not a header field name: {name!r}")
        self._extra.append((name, _check_text(f"{name} value", value)))

    def dispatch(self) -> _native.DispatchObject:
        """The message as a late-bound EMSMessageParser object."""
        return self._parsed().dispatch()

    def _assemble(self) -> bytes:
        date = self._date or _datetime.datetime.now(_datetime.timezone.utc).astimezone()
        request = {
            "subject": self._subject,
            "date": _email_utils.format_datetime(date),
            "sender": [tuple(self._sender)] if self._sender is not None else [],
            "to": [tuple(a) for a in self._to],
            "cc": [tuple(a) for a in self._cc],
            "headers": list(self._extra),
            "text": self._text,
            "html": self._html,
            "attachments": list(self._attachments),
        }
        if request["text"] is None and request["html"] is None and not request["attachments"]:
            request["text"] = ""
        return _native.compose(request)

    def __bytes__(self) -> bytes:
        """The assembled message, CR LF line ends."""
        if self._composed:
            return self._assemble()
        return self._parsed().assemble()

    def __repr__(self) -> str:
        return f"<parcelvane.Message subject={self.subject!r}>"


def _body(what: str, value: str) -> str:
    if not isinstance(value, str):
        raise TypeError(f"{what} must be str, not {type(value).__name__}")
    if "\r" in value:
        raise ValueError(f"{what}: write line ends as \\n (a CR would not read back)")
    if "\x00" in value:
        raise ValueError(f"{what} holds a NUL character")
    value.encode("utf-8")
    return value

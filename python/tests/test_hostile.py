"""Hostile input: any bytes parse to a message or raise ValueError, and every late-bound
member answers random arguments with a value or an exception, never a crash."""

import os

from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

import parcelvane
from parcelvane import ComError, Dispatch

EXAMPLES = int(os.environ.get("PARCELVANE_HYPOTHESIS_EXAMPLES", "300"))
SETTINGS = settings(max_examples=EXAMPLES, deadline=None, suppress_health_check=[HealthCheck.too_slow])

mail_bytes = st.one_of(
    st.binary(max_size=2000),
    st.lists(
        st.sampled_from([b"Subject: x\r\n", b"Content-Type: multipart/mixed; boundary=b\r\n", b"\r\n", b"--b\r\n",
                         b"--b--\r\n", b"Content-Transfer-Encoding: base64\r\n", b"=?utf-8?B?w6k=?=", b"begin 644 a\r\n",
                         b"end\r\n", b"\n", b"From a@b\n", b"To: A: b@c, d;\r\n", b"\xff\xfe", b"=\r\n", b"QUJD\r\n"]),
        max_size=40,
    ).map(b"".join),
)


@SETTINGS
@given(data=mail_bytes, crlf=st.booleans())
def test_any_bytes_parse_or_raise_value_error(data, crlf):
    try:
        msg = parcelvane.parse(data, crlf=crlf)
    except ValueError:
        return
    for part in msg.walk():
        part.content_type, part.filename, part.is_attachment
        part.decoded()
        part.text()
    msg.subject, msg.sender, msg.to, msg.cc, msg.date, msg.headers, msg.text, msg.html
    raw = bytes(msg)
    assert isinstance(raw, bytes)
    try:
        # What the library writes need not read as a message by the command's rule.
        assert isinstance(parcelvane.parse(raw, crlf=False).subject, str)
    except ValueError:
        pass


CLASSES = ["EMSDataObject", "EMSHeaderCharset", "EMSHeaderMailbox", "EMSHeaderMailboxes", "EMSMessageParameter",
           "EMSMessageParameters", "EMSMessageParser", "EMSMimeAttribute", "EMSMimeAttributes", "EMSMimePart",
           "EMSMimePartDecoder", "EMSMimePartEncoder", "EMSMimeParts"]
SKIP = {"CreateDataFromFile", "CreateEmptyData"}  # files and allocations the caller chooses
values = st.one_of(st.none(), st.integers(-3, 300), st.text(max_size=30), st.binary(max_size=30),
                   st.sampled_from(["text/plain", "Content-Type", "name", "a@b.c", "0"]))


@SETTINGS
@given(class_name=st.sampled_from(CLASSES), data=st.data())
def test_late_bound_members_never_crash(class_name, data):
    obj = Dispatch(class_name)
    seed = Dispatch("EMSMessageParser")
    seed.ParseObject(b"Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nx\r\n--b--\r\n")
    members = [m for m in dir(obj) if m not in SKIP]
    for _ in range(6):
        name = data.draw(st.sampled_from(members))
        args = data.draw(st.lists(st.one_of(values, st.just(seed)), max_size=4))
        try:
            member = getattr(obj, name)
            if callable(member):
                member(*args)
            elif args:
                setattr(obj, name, args[0])
        except (ComError, TypeError, OverflowError, AttributeError, ValueError):
            pass

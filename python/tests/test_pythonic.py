"""The Pythonic layer: parse, reading, composing, mailboxes, the -m entry."""

import datetime
import io
import os
import pathlib
import subprocess
import sys

import pytest

import parcelvane
from parcelvane import Address, Group, Message, parse

from conftest import SAMPLES, run_tool, sample_bytes

PLAIN = b"From: Ann <ann@example.org>\nTo: bob@example.net\nSubject: hello\nDate: Mon, 2 Jun 2025 08:00:00 -0000\n\nline one\nline two\n"


def test_parse_sample_report():
    msg = parse(sample_bytes("multipart-report.eml"))
    assert msg.subject == "Grüße aus Köln – Bericht für Q3"
    assert msg.sender == Address("Jürgen Müller", "juergen.mueller@example.org")
    assert msg.to == [Address("Anna Łukasiewicz", "anna@example.com"), Address("", "bob@example.net")]
    assert msg.cc == []
    assert msg.date == datetime.datetime(2025, 7, 1, 10, 52, 37, tzinfo=datetime.timezone(datetime.timedelta(hours=2)))
    assert msg["subject"] == msg["SUBJECT"] == msg.subject
    assert msg["X-Nope"] is None
    types = [(p.depth, p.content_type, p.is_attachment) for p in msg.walk()]
    assert types == [
        (0, "multipart/mixed", False),
        (1, "multipart/alternative", False),
        (2, "text/plain", False),
        (2, "text/html", False),
        (1, "application/pdf", True),
    ]
    leaves = [p for p in msg.walk() if not p.is_multipart]
    assert [len(p.decoded()) for p in leaves] == [175, 304, 142]
    assert leaves[0].transfer_encoding == "quoted-printable"
    assert leaves[0].text() == msg.text
    assert msg.text.startswith("Hallo Anna,\n\nanbei der Bericht")
    assert "\r" not in msg.text
    assert msg.html.lstrip().startswith("<")
    (attachment,) = msg.attachments
    assert attachment.filename == "Bericht für Q3.pdf"
    assert attachment.content_type == "application/pdf"
    assert attachment.decoded().startswith(b"%PDF")
    assert msg.is_multipart


def test_headers_are_ordered_decoded_pairs():
    msg = parse(sample_bytes("multipart-report.eml"))
    names = [name for name, _ in msg.headers]
    assert names[:4] == ["From", "To", "Subject", "Date"]
    assert ("Subject", "Grüße aus Köln – Bericht für Q3") in msg.headers
    assert msg.get_all("subject") == ["Grüße aus Köln – Bericht für Q3"]


def test_parse_inputs_bytes_str_path_file_object(tmp_path):
    path = tmp_path / "m.eml"
    path.write_bytes(PLAIN)
    for source in (PLAIN, bytearray(PLAIN), memoryview(PLAIN), PLAIN.decode(), path, str(path), io.BytesIO(PLAIN)):
        msg = parse(source)
        assert msg.subject == "hello"
        assert msg.text == "line one\nline two\n"
    with open(path, "rb") as f:
        assert parse(f).sender == Address("Ann", "ann@example.org")
    with open(path, "r") as f, pytest.raises(TypeError, match="binary"):
        parse(f)
    with pytest.raises(TypeError):
        parse(12)


def test_bare_lf_becomes_crlf_unless_turned_off():
    msg = parse(PLAIN)
    assert bytes(msg).count(b"\r\n") >= 6
    assert msg.walk and list(msg.walk()) == []  # a plain message has no parts
    raw = parse(PLAIN, crlf=False)
    # Without CR LF the library finds no blank line: all is header.
    assert raw.text != "line one\nline two\n"


def test_date_without_zone_is_utc_and_unreadable_is_none():
    assert parse(PLAIN).date == datetime.datetime(2025, 6, 2, 8, 0, tzinfo=datetime.timezone.utc)
    assert parse(b"Subject: x\r\nDate: someday\r\n\r\nb").date is None
    assert parse(b"Subject: x\r\n\r\nb").date is None


def test_groups_are_kept():
    msg = parse(b"From: Team: a@x.org, B <b@y.org>;\r\nTo: Empty:;, c@z.org\r\nCc: \"Q, R\" <q@r.org>\r\n\r\nbody")
    assert msg.sender == Address("", "a@x.org")
    assert msg.to == [Group("Empty", ()), Address("", "c@z.org")]
    assert msg.cc == [Address("Q, R", "q@r.org")]
    frm = parse(b"From: Team: a@x.org, B <b@y.org>;\r\nTo: Team: a@x.org, B <b@y.org>;\r\n\r\nbody").to
    assert frm == [Group("Team", (Address("", "a@x.org"), Address("B", "b@y.org")))]


def test_not_a_message_raises_value_error():
    with pytest.raises(ValueError, match="not a message"):
        parse(b"")


def test_compose_reads_back_and_assembles():
    m = Message()
    m.subject = "Grüße \"quoted\" back\\slash\ttab " + "long " * 100
    m.sender = ("Jürgen \"JM\" Müller, Esq.", "jm@example.org")
    m.to = [("Anna", "anna@example.com"), "bob@example.net"]
    m.cc = ("C\\D", "c@example.net")
    m.text = "Hallo\nWelt  \n"
    m.html = "<p>hi</p>"
    m.add_attachment("Bericht für Q3 \"x\";.pdf", b"%PDF\x00\x01" * 50)
    m.add_attachment("a.bin", b"", content_type="application/x-thing")
    m.add_header("X-Tag", "value")
    raw = bytes(m)
    assert b"\r\n" in raw and b"\n" not in raw.replace(b"\r\n", b"")
    p = parse(raw)
    assert p.subject == m.subject
    assert p.sender == m.sender
    assert p.to == [Address("Anna", "anna@example.com"), Address("", "bob@example.net")]
    assert p.cc == [Address("C\\D", "c@example.net")]
    assert (p.text, p.html) == (m.text, m.html)
    assert [(a.filename, a.content_type, a.decoded()) for a in p.attachments] == [
        ("Bericht für Q3 \"x\";.pdf", "application/pdf", b"%PDF\x00\x01" * 50),
        ("a.bin", "application/x-thing", b""),
    ]
    assert p["X-Tag"] == "value"
    assert p["MIME-Version"] == "1.0"
    assert p.date is not None and p.date.tzinfo is not None
    # The composed message reads like a parsed one.
    assert [part.content_type for part in m.walk()] == [part.content_type for part in p.walk()]


def test_compose_date_and_plain_message():
    m = Message()
    when = datetime.datetime(2024, 2, 29, 23, 59, 1, tzinfo=datetime.timezone(datetime.timedelta(hours=-5)))
    m.date = when
    m.subject = "plain"
    m.text = "just text"
    p = parse(bytes(m))
    assert p.date == when
    assert p.text == "just text"
    assert not p.is_multipart
    with pytest.raises(ValueError, match="timezone"):
        m.date = datetime.datetime(2024, 1, 1)


@pytest.mark.parametrize("value", ["a\r\nBcc: x@y", "a\nb", "a\rb", "nul\x00"])
def test_line_breaks_in_header_values_are_refused(value):
    m = Message()
    with pytest.raises(ValueError):
        m.subject = value
    with pytest.raises(ValueError):
        m.sender = (value, "a@b.org")
    with pytest.raises(ValueError):
        m.to = [("ok", "a@b.org" + value)]
    with pytest.raises(ValueError):
        m.add_attachment("x" + value + ".txt", b"data")
    with pytest.raises(ValueError):
        m.add_header("X-Tag", value)


@pytest.mark.parametrize("address", ["", "a b@c.org", "<a@b.org>", "a@b.org,c@d.org", "ä@b.org", 'a"@b.org'])
def test_malformed_addresses_are_refused(address):
    with pytest.raises(ValueError, match="address"):
        Message().sender = ("Name", address)


def test_content_type_and_field_names_are_checked():
    m = Message()
    with pytest.raises(ValueError):
        m.add_attachment("a.txt", b"x", content_type="text/plain; name=evil")
    with pytest.raises(ValueError):
        m.add_header("Bad Name", "v")
    with pytest.raises(ValueError):
        m.text = "a\r\nb"


def test_parsed_message_is_read_only():
    msg = parse(PLAIN)
    with pytest.raises(AttributeError, match="read-only"):
        msg.subject = "x"


def test_late_bound_view_of_a_parsed_message():
    msg = parse(sample_bytes("multipart-report.eml"))
    d = msg.dispatch()
    assert d.Subject == msg.subject
    part = msg.attachments[0].dispatch()
    assert part.DecodedBinary.Data == msg.attachments[0].decoded()


def test_mbox_streams_messages(tmp_path):
    box = tmp_path / "box.mbox"
    box.write_bytes(
        b"From a@b Mon Jan  1 00:00:00 2024\nSubject: one\n\nbody one\n>From quoted\n\n"
        b"From c@d Mon Jan  1 00:00:00 2024\nSubject: two\n\nbody two\n"
    )
    messages = list(parcelvane.mbox(box))
    assert [m.subject for m in messages] == ["one", "two"]
    assert messages[0].text == "body one\nFrom quoted\n"
    assert messages[1].text == "body two\n"
    sample = [m.subject for m in parcelvane.mbox(os.path.join(SAMPLES, "mailbox.mbox"))]
    assert len(sample) >= 2
    bad = tmp_path / "not.mbox"
    bad.write_bytes(b"Subject: x\n\nbody\n")
    with pytest.raises(ValueError, match="not an mbox"):
        list(parcelvane.mbox(bad))


def test_mbox_is_lazy(tmp_path):
    box = tmp_path / "big.mbox"
    with open(box, "wb") as f:
        for i in range(2000):
            f.write(b"From x@y Mon Jan  1 00:00:00 2024\nSubject: m%d\n\nbody\n\n" % i)
    it = parcelvane.mbox(box)
    assert next(it).subject == "m0"
    assert next(it).subject == "m1"
    assert sum(1 for _ in it) == 1998


def test_maildir(tmp_path):
    for sub in ("cur", "new", "tmp"):
        (tmp_path / sub).mkdir()
    (tmp_path / "cur" / "2.x").write_bytes(b"Subject: b\n\nB\n")
    (tmp_path / "cur" / "1.x").write_bytes(b"Subject: a\n\nA\n")
    (tmp_path / "new" / "3.x").write_bytes(b"Subject: c\n\nC\n")
    (tmp_path / "tmp" / "4.x").write_bytes(b"Subject: partial\n\n")
    assert [m.subject for m in parcelvane.maildir(tmp_path)] == ["a", "b", "c"]


@pytest.mark.parametrize("args", [["multipart-report.eml"], ["--json", "multipart-report.eml"], ["uuencoded.eml"],
                                  ["plain.eml"], ["unsafe-names.eml"]])
def test_module_entry_prints_what_show_prints(tool, args):
    args = [os.path.join(SAMPLES, a) if a.endswith(".eml") else a for a in args]
    expected = run_tool(tool, "show", *args)
    got = subprocess.run([sys.executable, "-m", "parcelvane", *args], capture_output=True)
    assert got.stdout == expected.stdout
    assert got.stderr == expected.stderr
    assert got.returncode == expected.returncode == 0


def test_module_entry_errors(tool, tmp_path):
    missing = str(tmp_path / "missing.eml")
    expected = run_tool(tool, "show", missing)
    got = subprocess.run([sys.executable, "-m", "parcelvane", missing], capture_output=True)
    assert (got.returncode, got.stdout, got.stderr) == (expected.returncode, expected.stdout, expected.stderr)
    assert got.returncode == 3


def test_parse_refers_to_immutable_input_and_copies_the_rest():
    import gc
    import sys

    crlf = b"Subject: held\r\n\r\nbody\r\n"
    base = sys.getrefcount(crlf)
    msg = parse(crlf)
    assert sys.getrefcount(crlf) == base + 1  # no copy: the message holds the bytes
    assert msg.subject == "held"
    del msg
    gc.collect()
    assert sys.getrefcount(crlf) == base
    lf = b"Subject: converted\n\nbody\n"
    base = sys.getrefcount(lf)
    msg = parse(lf)
    assert sys.getrefcount(lf) == base  # line ends converted: the message holds its own text
    assert msg.text == "body\n"
    data = bytearray(b"Subject: mutable\r\n\r\nbody")
    msg = parse(data)
    data[9:16] = b"CHANGED"
    assert msg.subject == "mutable"

"""The late-bound layer: names, calls, conversions, statuses, iteration."""

import gc

import pytest

import parcelvane
from parcelvane import ComError, Dispatch

from conftest import sample_bytes

E_POINTER = 0x80004003
E_INVALIDARG = 0x80070057
E_FAIL = 0x80004005
CO_E_CLASSSTRING = 0x800401F3


@pytest.fixture
def report():
    m = Dispatch("ParcelvaneLib.EMSMessageParser")
    m.FullMessage = sample_bytes("multipart-report.eml").decode("utf-8").replace("\n", "\r\n")
    return m


def test_program_identifiers_versioned_unversioned_and_bare():
    for name in ("ParcelvaneLib.EMSMessageParser", "ParcelvaneLib.EMSMessageParser.1", "EMSMessageParser",
                 "parcelvanelib.emsmessageparser"):
        assert repr(Dispatch(name)) == "<parcelvane.EMSMessageParser object>"
    assert repr(Dispatch("EMSMimeParts")) == "<parcelvane.EMSMimeParts object>"


def test_unknown_program_identifier_raises_com_error():
    with pytest.raises(ComError) as info:
        Dispatch("ParcelvaneLib.NoSuchClass")
    assert info.value.hresult == CO_E_CLASSSTRING
    assert info.value.operation == 'Dispatch("ParcelvaneLib.NoSuchClass")'
    assert "program identifier" in info.value.message


def test_properties_methods_and_case(report):
    assert report.Subject == "Grüße aus Köln – Bericht für Q3"
    assert report.subject == report.SUBJECT == report.Subject
    assert report.SenderEmail == "juergen.mueller@example.org"
    assert report.senderName == "Jürgen Müller"
    assert report.HeaderString("To").endswith("<anna@example.com>, bob@example.net")
    assert report.headerstring("date") == "Tue, 1 Jul 2025 10:52:37 +0200"
    assert report.IsMimeMessage() is None  # S_OK with no result


def test_property_put_and_put_with_arguments(report):
    report.Subject = "Neu"
    assert report.Subject == "Neu"
    report.SetHeaderString("X-Tag", "v")
    assert report.HeaderString("X-Tag") == "v"
    report.setheaderstring("x-tag", "w")
    assert report.HeaderString("X-TAG") == "w"
    boxes = Dispatch("EMSHeaderMailboxes")
    boxes.SetMailboxData(-1, "Anna", "anna@example.com")
    assert (boxes.Count, boxes.MailboxName(0), boxes.MailboxAddress(0)) == (1, "Anna", "anna@example.com")


def test_object_results_and_object_arguments(report):
    root = report.MimePart
    assert repr(root) == "<parcelvane.EMSMimePart object>"
    parts = root.MimeParts
    assert parts.PartsCount == 2
    pdf = parts.Part(1)
    assert pdf.AttachName == "Bericht für Q3.pdf"
    decoded = pdf.DecodedBinary
    assert decoded.DataSize == 142
    copy = Dispatch("EMSMimePart")
    copy.BodyObject = decoded
    assert copy.BodyObject == decoded  # the same object comes back
    assert report.MimePart == root and hash(report.MimePart) == hash(root)


def test_parts_list_iterates_counts_and_indexes(report):
    parts = report.MimePart.MimeParts
    assert len(parts) == 2
    types = [p.MimeContentTypeString for p in parts]
    assert types == ["multipart/alternative", "application/pdf"]
    assert parts[0].MimeContentTypeString == "multipart/alternative"
    assert parts[-1].AttachName == "Bericht für Q3.pdf"
    assert parts(1).AttachName == "Bericht für Q3.pdf"  # the default member, as scripts call it
    assert [p.MimeContentTypeString for p in parts[0:2]] == types
    with pytest.raises(IndexError):
        parts[2]
    with pytest.raises(IndexError):
        parts[-3]
    empty = Dispatch("EMSMimeParts")
    assert len(empty) == 0 and list(empty) == []


def test_not_a_collection(report):
    with pytest.raises(TypeError):
        len(report)
    with pytest.raises(TypeError):
        iter(report)
    with pytest.raises(TypeError):
        report[0]
    assert bool(report) is True


def test_strings_round_trip_through_wide_strings():
    mailbox = Dispatch("EMSHeaderMailbox")
    for text in ["", "plain", "Łódź – 日本語 – \U0001F600 emoji", "tab\tquote\"back\\slash", "\ud800 lone"]:
        mailbox.Name = text
        assert mailbox.Name == (None if text == "" else text) or mailbox.Name == text


def test_integers_are_range_checked():
    data = Dispatch("EMSDataObject")
    data.Data = b"0123456789"
    data.Position = 4294967295 - 4294967295 + 3  # ULONG accepts 0..2**32-1
    assert data.Position == 3
    with pytest.raises(OverflowError, match="unsigned 32-bit"):
        data.Position = 2**32
    with pytest.raises(OverflowError, match="unsigned 32-bit"):
        data.Length = -1
    parser = Dispatch("EMSMessageParser")
    parser.DefaultCodePage = -(2**31)
    assert parser.DefaultCodePage == -(2**31)
    parser.DefaultCodePage = 2**31 - 1
    assert parser.DefaultCodePage == 2**31 - 1
    with pytest.raises(OverflowError, match="signed 32-bit"):
        parser.DefaultCodePage = 2**31
    with pytest.raises(OverflowError):
        parser.DefaultCodePage = -(2**31) - 1
    with pytest.raises(OverflowError):
        parser.DefaultCodePage = 10**30


def test_type_errors_name_the_operation_and_parameter():
    parser = Dispatch("EMSMessageParser")
    with pytest.raises(TypeError, match=r"EMSMessageParser.ParseObject \(pObject\)"):
        parser.ParseObject("not an object")
    with pytest.raises(TypeError, match="expected"):
        parser.DefaultCodePage = 1.5
    with pytest.raises(TypeError, match="takes 1 argument"):
        parser.HeaderString()
    with pytest.raises(TypeError, match="takes 1 argument"):
        parser.FindHeader("a", "b")


@pytest.mark.parametrize("kind", [bytes, bytearray, memoryview])
def test_bytes_like_in_and_bytes_out(kind):
    payload = bytes(range(256)) * 3
    data = Dispatch("EMSDataObject")
    data.Data = kind(payload)
    assert data.Data == payload
    assert data.DataSize == 768
    data.CreateDataArray(kind(b"abc"))
    assert data.Data == b"abc"
    # A bytes-like object where a data object is expected becomes one.
    parser = Dispatch("EMSMessageParser")
    parser.ParseObject(kind(b"Subject: hi\r\n\r\nbody"))
    assert parser.Subject == "hi"
    assert parser.BodyObject.ExtractBlockAsData().Data == b"body"


def test_strided_memoryview_is_read_in_order():
    data = Dispatch("EMSDataObject")
    data.Data = memoryview(b"abcdef")[::2]
    assert data.Data == b"ace"


def test_text_array_and_code_page_argument():
    data = Dispatch("EMSDataObject")
    data.CreateDataArray("Grüße".encode("utf-8"), 65001)  # optional code page given
    assert data.Data == "Grüße".encode("utf-8")
    data.CreateDataArray(b"abc")  # code page left out
    assert data.Data == b"abc"
    # A str is passed as a wide string, which the data object does not take.
    with pytest.raises(ComError) as info:
        data.CreateDataArray("abc")
    assert info.value.hresult == E_INVALIDARG


def test_optional_arguments_left_out_and_by_name():
    part = Dispatch("EMSMimePart")
    data = Dispatch("EMSDataObject")
    data.Data = b"hello"
    part.CreateAttach("a.txt", data)  # the last four left out
    assert part.AttachName == "a.txt"
    other = Dispatch("EMSMimePart")
    other.CreateAttach("b.bin", data, bszContentType="application/x-test")
    assert other.FindHeader("Content-Type").RawData.startswith("application/x-test;")
    with pytest.raises(TypeError, match="no parameter named"):
        other.CreateAttach("b.bin", data, nope=1)
    with pytest.raises(TypeError, match="2 to 6 arguments"):
        other.CreateAttach("b.bin")


def test_failing_status_raises_com_error_with_status_operation_and_message():
    parser = Dispatch("EMSMessageParser")
    parser.FullMessage = "Subject: x\r\n\r\nplain"
    with pytest.raises(ComError) as info:
        parser.MimePart  # a plain message has no root part
    assert info.value.hresult == E_FAIL
    assert info.value.operation == "EMSMessageParser.MimePart"
    assert "E_FAIL" in info.value.message
    assert str(info.value).startswith("EMSMessageParser.MimePart: ")
    parts = Dispatch("EMSMimeParts")
    with pytest.raises(ComError) as info:
        parts.Part(-1)
    assert info.value.hresult == E_INVALIDARG
    assert isinstance(info.value, Exception)


def test_s_false_and_missing_strings_are_none():
    parser = Dispatch("EMSMessageParser")
    parser.FullMessage = "Subject: x\r\n\r\nplain"
    assert parser.HTMLBody is None  # S_FALSE: a plain message has no HTML body
    assert parser.TextBody == "plain"
    part = Dispatch("EMSMimePart")
    assert part.DecodedBinary is None  # S_FALSE: no body


def test_unknown_members_and_read_only():
    parser = Dispatch("EMSMessageParser")
    with pytest.raises(AttributeError, match="no member 'Nope'"):
        parser.Nope
    with pytest.raises(AttributeError, match="read-only"):
        parser.Size = 3
    with pytest.raises(AttributeError, match="takes arguments"):
        parser.HeaderString = "x"
    charset = Dispatch("EMSHeaderCharset")
    with pytest.raises(AttributeError, match="can only be set"):
        charset.HeaderName
    charset.HeaderName = "Subject"


def test_dir_and_help_list_members_and_parameters(report):
    names = dir(report)
    for name in ("Subject", "FullMessage", "HeaderString", "SetHeaderString", "AddAttach", "MimePart"):
        assert name in names
    doc = report.HeaderString.__doc__
    assert doc.startswith("HeaderString(bszHeader: str) -> str")
    assert report.SetHeaderString.__doc__.startswith("SetHeaderString(bszHeader: str, bszValue: str) -> None")
    assert Dispatch("EMSMimePart").CreateAttach.__doc__.startswith(
        "CreateAttach(bszName: str, pObject: EMSDataObject, bEncoded: int = <omitted>"
        if False else "CreateAttach(bszName: str, pObject: EMSDataObject, bEmbedded: int = <omitted>")
    import pydoc
    text = pydoc.render_doc(report.FindHeader, renderer=pydoc.plaintext)
    assert "FindHeader(bszName: str) -> EMSMessageParameter" in text
    text = pydoc.render_doc(report, renderer=pydoc.plaintext)
    for line in ("A late-bound EMSMessageParser object", "HeaderString(bszHeader: str) -> str",
                 "SetHeaderString(bszHeader: str, bszValue: str) -> None", "Subject (property)"):
        assert line in text


def test_live_objects_return_to_zero_after_100000():
    gc.collect()
    before = parcelvane.live_objects()
    parser = Dispatch("EMSMessageParser")
    parser.FullMessage = sample_bytes("multipart-report.eml").decode("utf-8").replace("\n", "\r\n")
    kept = []
    for i in range(100_000):
        part = parser.MimePart if i % 2 else Dispatch("EMSDataObject")
        if i % 1000 == 0:
            kept.append(part)
    # The parser, the kept objects and the last one bound to `part`.
    assert parcelvane.live_objects() == before + 2 + len(kept)
    del kept, part, parser
    gc.collect()
    assert parcelvane.live_objects() == before
    assert parcelvane._native.can_unload() == (before == 0)


def test_immutable_bytes_are_not_copied_and_are_let_go():
    import sys

    payload = b"Subject: zero copy\r\n\r\n" + b"x" * 100_000
    base = sys.getrefcount(payload)
    parser = Dispatch("EMSMessageParser")
    parser.ParseObject(payload)  # the data object refers to the bytes themselves
    assert sys.getrefcount(payload) == base + 1
    assert parser.Subject == "zero copy"
    view = memoryview(payload)[:30]
    other = Dispatch("EMSMessageParser")
    other.ParseObject(view)
    assert other.Subject == "zero copy"
    del parser, other, view
    gc.collect()
    assert sys.getrefcount(payload) == base


def test_mutable_bytes_are_copied():
    import sys

    payload = bytearray(b"Subject: before\r\n\r\nbody")
    base = sys.getrefcount(payload)
    parser = Dispatch("EMSMessageParser")
    parser.ParseObject(payload)
    assert sys.getrefcount(payload) == base
    payload[9:15] = b"AFTER!"
    assert parser.Subject == "before"

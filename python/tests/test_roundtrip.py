"""Compose -> bytes -> parse with random Unicode: what comes back equals what went in."""

import os
import string

from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

from parcelvane import Address, Message, parse

# Header text: any character but CR, LF and NUL (refused), and no lone
# surrogates (not text).
header_text = st.text(
    alphabet=st.characters(blacklist_categories=("Cs",), blacklist_characters="\r\n\x00"), max_size=200
)
# Bodies: line ends as "\n" (a CR is refused).
body_text = st.text(alphabet=st.characters(blacklist_categories=("Cs",), blacklist_characters="\r\x00"), max_size=2000)
file_name = header_text.filter(lambda s: s.strip() != "")
address = st.builds(
    lambda local, domain: f"{local}@{domain}.example",
    st.text(alphabet=string.ascii_letters + string.digits + "._+-", min_size=1, max_size=20),
    st.text(alphabet=string.ascii_lowercase + string.digits, min_size=1, max_size=20),
)
mailbox = st.tuples(header_text, address)

# PARCELVANE_HYPOTHESIS_EXAMPLES=5000 for a longer search.
SETTINGS = settings(
    max_examples=int(os.environ.get("PARCELVANE_HYPOTHESIS_EXAMPLES", "300")),
    deadline=None,
    suppress_health_check=[HealthCheck.too_slow],
)


@SETTINGS
@given(subject=header_text, sender=mailbox, to=st.lists(mailbox, min_size=1, max_size=4), cc=st.lists(mailbox, max_size=3))
def test_header_values_round_trip(subject, sender, to, cc):
    m = Message()
    m.subject = subject
    m.sender = sender
    m.to = to
    m.cc = cc
    m.text = "body"
    p = parse(bytes(m))
    assert p.subject == subject
    assert p.sender == Address(*sender)
    assert p.to == [Address(*a) for a in to]
    assert p.cc == [Address(*a) for a in cc]


@SETTINGS
@given(text=body_text, html=st.one_of(st.none(), body_text))
def test_bodies_round_trip(text, html):
    m = Message()
    m.subject = "bodies"
    m.sender = ("", "a@b.example")
    m.text = text
    m.html = html
    p = parse(bytes(m))
    assert p.text == text
    assert p.html == html


@SETTINGS
@given(
    attachments=st.lists(st.tuples(file_name, st.binary(max_size=3000)), min_size=1, max_size=3),
    text=st.one_of(st.none(), body_text),
)
def test_attachments_round_trip(attachments, text):
    m = Message()
    m.subject = "files"
    m.sender = ("", "a@b.example")
    m.text = text
    for name, data in attachments:
        m.add_attachment(name, data)
    p = parse(bytes(m))
    assert [(a.filename, a.decoded()) for a in p.attachments] == attachments
    if text is not None:
        assert p.text == text

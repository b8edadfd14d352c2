"""On the real-message collection beside the repository (skipped when absent): the
Pythonic layer agrees with the late-bound objects and with `parcelvane show --json`."""

import json
import os
import subprocess

import pytest

import parcelvane
from parcelvane import Dispatch, _native

from conftest import corpus_files, run_tool

FILES = corpus_files()
pytestmark = pytest.mark.skipif(not FILES, reason="no message collection at ../shared/corpus")


def readable(text, raw_field):
    """The documented reading rule: raw 8-bit UTF-8 repaired only where the raw field holds 8-bit text."""
    if text is None:
        return ""
    if raw_field and any(ord(c) >= 0x80 for c in raw_field):
        text = _native.display_text(text)
    return text


def late_bound_leaves(message):
    """Decoded bytes of every leaf, depth first, through late binding only."""
    try:
        root = message.MimePart
    except parcelvane.ComError:
        return []
    leaves = []
    stack = [root]
    while stack:
        part = stack.pop()
        children = list(part.MimeParts)
        if children:
            stack.extend(reversed(children))
            continue
        if (part.MimeContentTypeString or "").lower().startswith("multipart/"):
            continue
        data = part.DecodedBinary
        # Data is the whole buffer; a decoded body may be a span of it.
        leaves.append(b"" if data is None else data.ExtractBlockAsData().Data)
    return leaves


@pytest.mark.parametrize("path", FILES, ids=[os.path.basename(f) for f in FILES])
def test_pythonic_layer_matches_late_bound_objects(path):
    with open(path, "rb") as f:
        raw = f.read()
    try:
        msg = parcelvane.parse(raw)
    except ValueError:
        pytest.skip("not a message")
    late = Dispatch("ParcelvaneLib.EMSMessageParser")
    late.ParseObject(_native.prepare(raw))
    subject = readable(late.Subject, late.HeaderString("Subject")).split("\r\n\r\n")[0]
    assert msg.subject == subject.replace("\r\n", "\n")
    if "From" in [name for name, _ in msg.headers] and ":" not in (late.HeaderString("From") or "").split("<")[0]:
        frm = late.HeaderString("From")
        sender = msg.sender or ("", "")
        assert tuple(sender) == (readable(late.SenderName, frm), readable(late.SenderEmail, frm))
    leaves = [p.decoded() for p in msg.walk() if not p.is_multipart]
    assert leaves == late_bound_leaves(late)


@pytest.mark.parametrize("path", FILES, ids=[os.path.basename(f) for f in FILES])
def test_tree_matches_show_json(tool, path):
    result = run_tool(tool, "show", "--json", path)
    if result.returncode == 4:
        with pytest.raises(ValueError):
            parcelvane.parse(path)
        return
    assert result.returncode == 0, result.stderr
    shown = json.loads(result.stdout)
    msg = parcelvane.parse(path)
    parts = list(msg.walk())
    assert len(parts) == len(shown["parts"])
    for part, expected in zip(parts, shown["parts"]):
        assert part.depth == expected["depth"]
        assert part.content_type == expected["content_type"]
        assert part.transfer_encoding == (expected["transfer_encoding"] or "")
        assert part.is_attachment == expected["attachment"]
        if expected["decoded_size"] is not None:
            assert len(part.decoded()) == expected["decoded_size"]
        if expected["attachment"]:
            assert part._core.attach_name == expected["name"]
    assert len(msg.attachments) == len(shown["attachments"])

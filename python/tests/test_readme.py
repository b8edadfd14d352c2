"""The README's Python examples run as written, from the repository root."""

import os
import re

import pytest

from conftest import ROOT

README = os.path.join(ROOT, "README.md")


def examples():
    with open(README, encoding="utf-8") as f:
        text = f.read()
    return re.findall(r"<!-- python-example -->\n```python\n(.*?)```", text, re.S)


def test_readme_has_an_example_of_each_layer():
    blocks = examples()
    assert len(blocks) == 2
    assert "Dispatch(" in blocks[0]
    assert "parcelvane.parse(" in blocks[1] and "parcelvane.Message()" in blocks[1]


@pytest.mark.parametrize("index", [0, 1])
def test_readme_example_runs(index, monkeypatch, capsys):
    monkeypatch.chdir(ROOT)
    exec(compile(examples()[index], f"README example {index + 1}", "exec"), {"__name__": "readme_example"})
    out = capsys.readouterr().out
    assert "Grüße aus Köln – Bericht für Q3" in out
    if index == 0:
        assert "Bericht für Q3.pdf 142" in out
        assert "0x80070057 EMSMimeParts.Part" in out
        assert "does not fit" in out
    else:
        assert "refused:" in out
        assert "Hallo Anna," in out

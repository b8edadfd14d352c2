"""Shared fixtures: the repository's sample messages, the real-message
collection when present, and the command built beside the package."""

import os
import shutil

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
SAMPLES = os.path.join(ROOT, "samples")
CORPUS = os.path.normpath(os.path.join(ROOT, "..", "shared", "corpus"))


@pytest.fixture
def samples():
    return SAMPLES


def sample_bytes(name):
    with open(os.path.join(SAMPLES, name), "rb") as f:
        return f.read()


@pytest.fixture
def tool():
    """The parcelvane command: PARCELVANE_TOOL (set by CTest), else one on the PATH."""
    path = os.environ.get("PARCELVANE_TOOL") or shutil.which("parcelvane")
    if not path or not os.path.exists(path):
        pytest.skip("the parcelvane command is not built")
    return path


def corpus_files():
    if not os.path.isdir(CORPUS):
        return []
    return sorted(os.path.join(CORPUS, n) for n in os.listdir(CORPUS) if n.endswith(".eml"))


def run_tool(tool, *args):
    """Runs the command. A sanitizer build links its runtime into the command itself, so the
    runtime that the tests load into the interpreter (LD_PRELOAD) is not passed on."""
    import subprocess

    env = dict(os.environ)
    env.pop("LD_PRELOAD", None)
    return subprocess.run([tool, *args], capture_output=True, env=env)

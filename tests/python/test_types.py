"""The types that the package states, checked by mypy."""

import subprocess
import sys
from pathlib import Path

import pytest

import sdblk

FOLDER = Path(sdblk.__file__).parent.parent
# An installed package is found without being told.
SEARCH = {} if FOLDER.name == "site-packages" else {"MYPYPATH": str(FOLDER)}

# What mypy itself says of every class made by pybind11, and of the standard library.
ALLOWED = r"""
sdblk(\._sdblk)?\.(Block|Lines|Volume)(\.__init__)?
.*\._?(Mapping|Iterable|Sequence|Iterator)\..*
"""

PROGRAM = """
import sdblk
from typing import Optional

with sdblk.open("a.seed", strict=True) as vol:
    for block in vol:
        name: Optional[str] = block.name
        chain: list[sdblk.Block] = block.chain
        fields: dict[str, object] = block.fields
    skipped: int = vol.skips[0]["length"] + vol.counts["records"]
title: str = sdblk.catalogue[52]["azimuth"].title
epochs: list[dict[str, object]] = sdblk.stations(["a", "b"], accept="^XX_", start="2020-01-01")
"""

WRONG = {
    "block.nme": 'has no attribute "nme"',
    "sdblk.open(5)": "incompatible type",
    "sdblk.stations('a', accpt='')": "Unexpected keyword argument",
    "sdblk.catalogue['52']": "Invalid index type",
}


@pytest.fixture(scope="module", name="cache")
def make_cache(tmp_path_factory):
    return tmp_path_factory.mktemp("cache")


def mypy(*arguments, cwd, cache):
    return subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", "--cache-dir", str(cache), *arguments],
        capture_output=True,
        text=True,
        check=False,
        cwd=cwd,
        env={"PATH": "/usr/bin:/bin", **SEARCH},
    )


def test_package_is_typed_strictly(tmp_path, cache):
    done = mypy("-p", "sdblk", cwd=tmp_path, cache=cache)
    assert done.returncode == 0, done.stdout


def test_program_is_checked(tmp_path, cache):
    (tmp_path / "program.py").write_text(PROGRAM)
    done = mypy("program.py", cwd=tmp_path, cache=cache)
    assert done.returncode == 0, done.stdout


def test_wrong_uses_are_found(tmp_path, cache):
    lines = "\n".join(WRONG)
    (tmp_path / "wrong.py").write_text(f"import sdblk\nblock = next(sdblk.open('a'))\n{lines}\n")
    said = mypy("wrong.py", cwd=tmp_path, cache=cache).stdout.splitlines()
    for number, text in enumerate(WRONG.values(), start=3):
        assert any(line.startswith(f"wrong.py:{number}:") and text in line for line in said), text


def test_stubs_are_what_is_there(tmp_path):
    (tmp_path / "allowed").write_text(ALLOWED)
    allowed = ["--allowlist", str(tmp_path / "allowed"), "--ignore-unused-allowlist"]
    done = subprocess.run(
        [sys.executable, "-m", "mypy.stubtest", "sdblk", *allowed],
        capture_output=True,
        text=True,
        check=False,
        cwd=FOLDER,
    )
    assert done.returncode == 0, done.stdout

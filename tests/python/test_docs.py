"""The code of the pages, run from top to bottom; what it prints is what the page says."""

import re
import shutil
import subprocess
import sys

import pytest
from matplotlib import pyplot

from conftest import ROOT

PAGE = ROOT / "docs" / "python.md"
README = ROOT / "README.md"
BLOCK = re.compile(r"^```(python|text)\n(.*?)^```$", re.M | re.S)
END = "---- end of a block ----"


def parts(page):
    """Pairs of code and the text that the page shows below it."""
    found = []
    for kind, text in BLOCK.findall(page.read_text()):
        if kind == "python":
            found.append([text, ""])
        else:
            found[-1][1] += text
    return found


def run_page(page, folder):
    """What each part of the page's code prints in a folder with the samples."""
    shutil.copytree(ROOT / "samples", folder / "samples")
    shutil.copy(ROOT / "samples" / "demo.seed", folder)
    code = "".join(f"{text}\nprint({END!r}, flush=True)\n" for text, _ in parts(page))
    done = subprocess.run(
        [sys.executable, "-c", code], cwd=folder, capture_output=True, text=True, check=False
    )
    assert done.returncode == 0, done.stderr
    return done.stdout.split(END + "\n")[:-1]


@pytest.fixture(scope="module")
def run(tmp_path_factory):
    folder = tmp_path_factory.mktemp("page")
    return folder, run_page(PAGE, folder)


def test_the_page_has_code():
    assert len(parts(PAGE)) > 10
    assert sum(bool(text) for _, text in parts(PAGE)) > 5


def test_the_code_prints_what_the_page_shows(run):
    assert run[1] == [text for _, text in parts(PAGE)]


def test_the_code_of_the_readme_prints_what_it_shows(tmp_path):
    shown = [text for _, text in parts(README)]
    assert shown and all(shown)
    assert run_page(README, tmp_path) == shown


@pytest.mark.parametrize("name", ["stations.png", "gaps.png"])
def test_the_pictures_are_made_by_the_code(run, name):
    made = pyplot.imread(run[0] / name)
    shown = pyplot.imread(ROOT / "docs" / "python" / name)
    assert made.shape == shown.shape
    assert abs(made - shown).mean() < 0.02

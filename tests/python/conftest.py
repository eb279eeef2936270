import os
from pathlib import Path

import pytest
from hypothesis import settings

ROOT = Path(__file__).resolve().parents[2]

# Nothing is written beside the sources.
settings.register_profile("sdblk", database=None, deadline=None)
settings.load_profile("sdblk")


def volumes():
    """The sample, and every file of the folder that TARVIK_TEST_VOLUMES names."""
    found = [ROOT / "samples" / "demo.seed"]
    folder = os.environ.get("TARVIK_TEST_VOLUMES")
    if folder:
        more = sorted(path for path in Path(folder).iterdir() if path.suffix != ".tsv")
        assert more, f"no volumes in {folder}"
        found += more
    return found


def pytest_generate_tests(metafunc):
    if "volume" in metafunc.fixturenames:
        paths = volumes()
        metafunc.parametrize("volume", paths, ids=[path.name for path in paths])


@pytest.fixture
def demo():
    return ROOT / "samples" / "demo.seed"

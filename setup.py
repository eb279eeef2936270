"""Builds the Python package with the library in it; the rest stands in pyproject.toml."""

import re
from pathlib import Path

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension
from setuptools import setup

ROOT = Path(__file__).parent
VERSION = re.search(r"^ *VERSION ([0-9.]+)$", (ROOT / "CMakeLists.txt").read_text(), re.M)[1]
FOLDERS = ["support", "seed", "seed/blkdefs", "seed/whole", "views", "python"]
# What only the commands use: it needs a header that CMake makes, libxml2 or nlohmann-json.
LEFT_OUT = {
    "support/announce.cpp",
    "views/response_xml.cpp",
    "views/schema.cpp",
    "views/stationxml.cpp",
    "views/xml.cpp",
    "views/xml_values.cpp",
}

sources = sorted(
    str(path.relative_to(ROOT))
    for folder in FOLDERS
    for path in (ROOT / folder).glob("*.cpp")
    if str(path.relative_to(ROOT)) not in LEFT_OUT
)
headers = [str(path.relative_to(ROOT)) for folder in FOLDERS for path in (ROOT / folder).glob("*.h")]

extension = Pybind11Extension(
    "sdblk._sdblk",
    sources,
    depends=[*headers, "python/exports.map"],
    include_dirs=["."],
    define_macros=[("TARVIK_VERSION", f'"{VERSION}"')],
    cxx_std=20,
    extra_compile_args=["-O3", "-fno-semantic-interposition", "-ffunction-sections"],
    extra_link_args=["-Wl,--gc-sections,-z,relro,-z,now,--version-script=python/exports.map"],
)

with ParallelCompile("SDBLK_BUILD_JOBS", default=0):
    setup(version=VERSION, ext_modules=[extension])

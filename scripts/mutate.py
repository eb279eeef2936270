#!/usr/bin/env python3
"""Puts single faults into the shipped code, one at a time, and sees which test finds each.

    mutate.py [--seed N] [--first N] [--count N] [--show] [FILE...]

The faults that can be made in seed/, cmd/ and support/, or in the files named, which may be of views/,
are shuffled by the seed and numbered; --first and --count choose which of them are tried.  For each one
line is printed:

    17 seed/scan.cpp:88 `<` -> `<=`: found by ScanInt.LongestNumber
    18 seed/walk.cpp:40 `++n;` -> ``: SURVIVED

Faults that do not compile are told of and not counted, but for those that a check at compile time finds.
--show prints the changed lines and builds nothing.  The work is done in a copy of the tree, in
build/mutation, so that sources can be edited meanwhile.
"""
import argparse
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / "build" / "mutation"
TREE = WORK / "tree"
BUILD = WORK / "build"
LAYERS = ("seed", "cmd", "support")
# The catalogue's rows are compared one by one with a table that was made by hand.
LEFT_OUT = re.compile(r"seed/blkdefs/(volume|dictionary|station|timespan|data|groups)\.h$")

# What is put in the place of an operator that has a blank on both sides; so types are left alone.
SWAPS = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="],
    ">=": [">", "<"], "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["+"], "/": ["*"],
    "%": ["*"], "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"], "+=": ["-="],
    "-=": ["+="], "*=": ["+="], "|=": ["&="], "&=": ["|="], "<<=": [">>="], ">>=": ["<<="],
}
OPERATOR = re.compile(r"(?<= )(==|!=|<<=|>>=|<=|>=|&&|\|\||<<|>>|[-+*|&]=|[-+*/%<>&|^])(?= )")
STEP = re.compile(r"\+\+|--(?!>)")
NEGATION = re.compile(r"(?<=[(&| ])!(?=[\w(])")
NUMBER = re.compile(r"(?<![\w.])(0x[0-9a-fA-F]+|\d+)(?![\w.])")
TRUTH = re.compile(r"\b(true|false)\b")
CONDITION = re.compile(r"\b(if|while) \((.*)\)( \{| [^()]*;)?$")
STATEMENT = re.compile(r"\s+(\*?[\w:.>\[\]-]+(?:\(.*\)| [-+*/|&<>]*= .*);|\*?(?:\+\+|--)\w+;)$")
LEAVING = re.compile(r"\s+(break|continue|return);$")


def code_only(text):
    """The text with comments and the insides of literals blanked out, as long as it was."""
    def blank(match):
        token = match.group()
        if token[0] in "\"'":
            return token[0] + " " * (len(token) - 2) + token[0]
        return re.sub(r"[^\n]", " ", token)
    return re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', blank, text,
                  flags=re.S)


def faults_of_line(code):
    """The faults that one line offers: (first column, last column, what stands there then)."""
    for match in OPERATOR.finditer(code):
        for other in SWAPS.get(match.group(), []):
            yield match.start(), match.end(), other
    for match in STEP.finditer(code):
        yield match.start(), match.end(), "--" if match.group() == "++" else "++"
    for match in NEGATION.finditer(code):
        yield match.start(), match.end(), ""
    for match in NUMBER.finditer(code):
        value = int(match.group(), 0)
        yield match.start(), match.end(), str(value + 1)
        if value > 0:
            yield match.start(), match.end(), str(value - 1)
    for match in TRUTH.finditer(code):
        yield match.start(), match.end(), "false" if match.group() == "true" else "true"
    match = CONDITION.search(code)
    if match and balanced(match.group(2)) and ";" not in match.group(2):
        yield match.start(2), match.end(2), "!(" + match.group(2) + ")"
    match = STATEMENT.match(code) or LEAVING.match(code)
    if match and balanced(match.group(1)):
        yield match.start(1), match.end(1), ";"


def balanced(text):
    depth = 0
    for letter in text:
        depth += {"(": 1, ")": -1}.get(letter, 0)
        if depth < 0:
            return False
    return depth == 0


def faults_of(path):
    """All faults of a file: (path, line number from 0, first column, last column, replacement)."""
    lines = code_only((ROOT / path).read_text()).split("\n")
    for number, code in enumerate(lines):
        if code.lstrip().startswith(("#", "static_assert", "template", "namespace")):
            continue
        for first, last, other in faults_of_line(code):
            yield path, number, first, last, other


def shipped_files(named):
    listed = subprocess.run(["git", "ls-files", *(named or LAYERS)], cwd=ROOT, capture_output=True,
                            text=True, check=True).stdout.split()
    return [name for name in listed if name.endswith((".cpp", ".h")) and not LEFT_OUT.search(name)]


class Fault:
    """One fault, and the file with it."""

    def __init__(self, number, fault):
        self.number = number
        self.path, self.line, self.first, self.last, self.other = fault
        self.original = (TREE if TREE.exists() else ROOT).joinpath(self.path).read_text()
        lines = self.original.split("\n")
        code = lines[self.line]
        self.old = code[self.first:self.last]
        # A condition is negated as it is written, literals and all.
        new = f"!({self.old})" if self.other.startswith("!(") else self.other
        self.new = new
        lines[self.line] = code[:self.first] + new + code[self.last:]
        self.changed_line = lines[self.line].strip()
        self.changed = "\n".join(lines)

    def __str__(self):
        old, new = (self.old, self.new) if len(self.old) < 60 else (self.old[:57] + "...", self.new[:57] + "...")
        return f"{self.number} {self.path}:{self.line + 1} `{old}` -> `{new}`"


def run(command, seconds, **options):
    """Exit status and output; status None when the time was up.  Whatever it started ends with it."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                               errors="replace", stdin=subprocess.DEVNULL, start_new_session=True,
                               preexec_fn=limit, **options)
    try:
        output, _ = process.communicate(timeout=seconds)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, _ = process.communicate()
        return None, output


def copy_tree():
    """The files of the tree, as they are now, in TREE; those that did not change keep their date."""
    names = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                           capture_output=True, text=True, check=True).stdout.splitlines()
    for name in names:
        source, target = ROOT / name, TREE / name
        if not source.is_file():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        if not target.exists() or target.read_bytes() != source.read_bytes():
            shutil.copy(source, target)
    kept = {TREE / name for name in names}
    for target in [path for path in TREE.rglob("*") if path.is_file() and path not in kept]:
        target.unlink()


def configure():
    status, output = run(["cmake", "-S", str(TREE), "-B", str(BUILD), "-G", "Ninja",
                          "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1",
                          "-DTARVIK_STATIC_RUNTIME=OFF"], 300)
    if status != 0:
        sys.exit(output)


def build():
    return run(["cmake", "--build", str(BUILD)], 1200)


# The tests of a layer, then those of the layers that use it; whatever else ctest knows comes last.
PROGRAMS = {"support": ["support", "seed", "cmd", "examples"],
            "seed": ["seed", "seed/whole", "cmd", "examples", "views"], "cmd": ["cmd"],
            "views": ["views"]}


def first_failure(path):
    """The test that fails, or None."""
    for folder in PROGRAMS[path.split("/")[0]]:
        program = BUILD / "tests" / folder / f"tests_{Path(folder).name}"
        status, output = run([str(program), "--gtest_fail_fast", "--gtest_brief=1"], 120)
        if status is None:
            return f"{program.name}: no end"
        if status != 0:
            failed = re.search(r"\[  FAILED  \] (\S+)", output)
            return failed.group(1) if failed else f"{program.name}: status {status}"
    status, output = run(["ctest", "--test-dir", str(BUILD), "--stop-on-failure", "--timeout", "60", "-j", "2",
                          "-R", r"^(docs|man|samples|consumer|includes)\."], 600)
    if status == 0:
        return None
    failed = re.search(r"Test +#\d+: (\S+) .*\*\*\*", output)
    return failed.group(1) if failed else "ctest"


def verdict(fault):
    status, output = build()
    if status != 0:
        if re.search(r"static assertion|non-constant condition|constant expression|overflow in", output):
            return "found by the compiler's checks"
        return "does not compile"
    test = first_failure(fault.path)
    return f"found by {test}" if test else "SURVIVED"


def try_fault(fault):
    target = TREE / fault.path
    target.write_text(fault.changed)
    try:
        return verdict(fault)
    finally:
        target.write_text(fault.original)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0],
                                     epilog=__doc__.split("\n\n", maxsplit=2)[2],
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--first", type=int, default=0)
    parser.add_argument("--count", type=int, default=100)
    parser.add_argument("--show", action="store_true")
    parser.add_argument("files", nargs="*", metavar="FILE")
    options = parser.parse_args()

    faults = [fault for path in shipped_files(options.files) for fault in faults_of(path)]
    random.Random(options.seed).shuffle(faults)
    chosen = list(enumerate(faults))[options.first:options.first + options.count]
    print(f"{len(faults)} faults can be made; {len(chosen)} of them, seed {options.seed}", flush=True)
    if options.show:
        for number, fault in chosen:
            made = Fault(number, fault)
            print(f"{made}\n    {made.changed_line}")
        return 0

    copy_tree()
    configure()
    status, output = build()
    if status != 0:
        sys.exit(output)
    unharmed = first_failure("support/")
    if unharmed:
        sys.exit(f"{unharmed} fails without a fault")
    counts = {"found": 0, "SURVIVED": 0, "does not compile": 0}
    for number, fault in chosen:
        made = Fault(number, fault)
        result = try_fault(made)
        counts["found" if result.startswith("found") else result] += 1
        print(f"{made}: {result}", flush=True)
    build()
    tried = counts["found"] + counts["SURVIVED"]
    print(f"{counts['found']} of {tried} found, {counts['SURVIVED']} survived, "
          f"{counts['does not compile']} do not compile")
    return 0


if __name__ == "__main__":
    sys.exit(main())

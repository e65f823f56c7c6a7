#!/usr/bin/env python3
"""Makes small wrong changes to a copy of this tree, one at a time, and prints those that no test notices.

The changes stand in tests/wrong-changes/*.txt; CONTRIBUTING.md says how. The copy and its build directory stay in
build/wrong-changes, so that the next run compiles only what differs. Exits 0 when every change was noticed, 1 when one was
not, 2 when the lists or the tree as it is are at fault.
"""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
COPY = ROOT / "build/wrong-changes/tree"
BUILD = ROOT / "build/wrong-changes/build"
DEFAULT_TESTS = ["dvsync-tests", "host-tests"]
# A test program that runs longer hangs, which is noticed, too.
SECONDS_PER_PROGRAM = 120


class Mistake(Exception):
    """What is wrong with a list, or with the tree before any change."""


class Change:
    def __init__(self, place):
        self.place = place
        self.description = None
        self.file = None
        self.tests = DEFAULT_TESTS
        self.equivalent = None
        self.before = None
        self.after = None

    def changed_text(self):
        path = ROOT / self.file
        if not path.is_file():
            raise Mistake(f"{self.place}: there is no {self.file}")
        text = path.read_text(encoding="utf-8")
        count = text.count(self.before) if self.before else 0
        if count != 1:
            raise Mistake(f"{self.place}: the text stands {count} times in {self.file}, not once: {self.description}")
        if self.before == self.after:
            raise Mistake(f"{self.place}: nothing is changed: {self.description}")
        return text.replace(self.before, self.after)


def read_list(path):
    """The changes in the list at `path`."""
    changes = []
    description = None
    change = None
    lines = path.read_text(encoding="utf-8").split("\n")
    index = 0

    def text_until(mark):
        nonlocal index
        begin = index
        while index < len(lines) and lines[index] != mark:
            index += 1
        if index == len(lines):
            raise Mistake(f"{path}:{begin}: the text that begins here is not ended by {mark}")
        index += 1
        return "\n".join(lines[begin : index - 1])

    while index < len(lines):
        line = lines[index]
        index += 1
        place = f"{path}:{index}"
        word, _, rest = line.partition(" ")
        if word == "#":
            description = rest
        elif word == "file" and rest and description and change is None:
            change = Change(place)
            change.description, description = description, None
            change.file = rest
        elif word == "tests" and rest and change:
            change.tests = rest.split()
        elif word == "equivalent" and rest and change:
            change.equivalent = rest
        elif line == "<<<<" and change:
            change.before = text_until("====")
            change.after = text_until(">>>>")
            changes.append(change)
            change = None
        elif line:
            raise Mistake(f"{place}: not understood: {line}")
    if change:
        raise Mistake(f"{change.place}: the text to change is missing")
    return changes


def write_if_different(path, content):
    if path.is_file() and path.read_bytes() == content:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)


def copy_tree():
    """Makes COPY what the tree is, new files included, without touching what did not change."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT, check=True,
                            stdout=subprocess.PIPE).stdout
    names = {name for name in os.fsdecode(listed).split("\0") if name and (ROOT / name).is_file()}
    for name in names:
        write_if_different(COPY / name, (ROOT / name).read_bytes())
        shutil.copymode(ROOT / name, COPY / name)
    for path in list(COPY.rglob("*")):
        if path.is_file() and str(path.relative_to(COPY)) not in names:
            path.unlink()


def configure():
    # A warning is no reason for a change not to be tried.
    subprocess.run(
        ["cmake", "-S", COPY, "-B", BUILD, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
         "-DCMAKE_C_COMPILER=clang", "-DCMAKE_CXX_COMPILER=clang++", "-DCMAKE_CXX_FLAGS=-w",
         "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld", "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld"],
        check=True, stdout=subprocess.DEVNULL)


def build(targets):
    """What the compilers say when they refuse, else None."""
    result = subprocess.run(["cmake", "--build", BUILD, "--target", *targets], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, errors="replace")
    return result.stdout if result.returncode else None


def noticed_by(program):
    """How the test program noticed that something is wrong, else None."""
    environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_COLOR="no")
    with subprocess.Popen([BUILD / "bin" / program], cwd=BUILD, env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, errors="replace", start_new_session=True) as process:
        try:
            output, _ = process.communicate(timeout=SECONDS_PER_PROGRAM)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return f"{program} does not end"
    if process.returncode == 0:
        return None
    failed = re.search(r"^\[  FAILED  \] ([^ ,]+)", output, re.MULTILINE)
    if failed:
        return failed[1]
    last = re.findall(r"^\[ RUN      \] (\S+)", output, re.MULTILINE)
    return f"{program} ends with {process.returncode}" + (f" in {last[-1]}" if last else "")


def first_noticing(programs):
    return next((how for how in map(noticed_by, programs) if how), None)


def try_change(change):
    """How `change` was noticed, else None. Raises Mistake when it does not compile."""
    path = COPY / change.file
    content = path.read_bytes()
    write_if_different(path, change.changed_text().encode())
    try:
        refusal = build(change.tests)
        if refusal:
            errors = [line for line in refusal.split("\n") if "error:" in line] or refusal.split("\n")[-5:]
            raise Mistake(f"{change.place}: does not compile: {change.description}\n    " + "\n    ".join(errors[:5]))
        return first_noticing(change.tests)
    finally:
        path.write_bytes(content)


def check_unchanged(changes):
    programs = sorted({program for change in changes for program in change.tests})
    print(f"Building {', '.join(programs)} unchanged ...", flush=True)
    refusal = build(programs)
    if refusal:
        raise Mistake("The tree does not compile as it is:\n" + refusal[-4000:])
    how = first_noticing(programs)
    if how:
        raise Mistake(f"The tests fail on the tree as it is: {how}")


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("lists", nargs="*", type=Path, metavar="LIST",
                        help="a list of changes; all in tests/wrong-changes unless given")
    parser.add_argument("--only", default="", metavar="PATTERN",
                        help="try only the changes whose description or file this regular expression matches")
    parser.add_argument("--check", action="store_true", help="only check that each change fits the tree")
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    lists = arguments.lists or sorted((ROOT / "tests/wrong-changes").glob("*.txt"))
    changes = []
    mistakes = []
    for path in lists:
        try:
            changes += read_list(path)
        except (Mistake, OSError) as mistake:
            mistakes.append(str(mistake))
    changes = [change for change in changes if re.search(arguments.only, f"{change.description}\n{change.file}")]
    for change in changes:
        try:
            change.changed_text()
        except Mistake as mistake:
            mistakes.append(str(mistake))
    if mistakes:
        raise Mistake("\n".join(mistakes))
    if arguments.check:
        return 0

    equivalent = [change for change in changes if change.equivalent]
    changes = [change for change in changes if not change.equivalent]
    unnoticed = []
    if changes:
        copy_tree()
        configure()
        check_unchanged(changes)
    for number, change in enumerate(changes, 1):
        begin = time.monotonic()
        try:
            how = try_change(change)
        except Mistake as mistake:
            mistakes.append(str(mistake))
            how = "DOES NOT COMPILE"
        if not how:
            unnoticed.append(change)
        print(f"{number}/{len(changes)} {time.monotonic() - begin:4.0f} s  {change.file}: {change.description}: "
              f"{how or 'NOT NOTICED'}", flush=True)

    for change in equivalent:
        print(f"equivalent: {change.file}: {change.description}: {change.equivalent}")
    for mistake in mistakes:
        print(mistake)
    for change in unnoticed:
        print(f"{change.place}: no test noticed: {change.file}: {change.description}")
    print(f"{len(changes)} changes tried: {len(unnoticed)} not noticed, {len(mistakes)} that do not compile; "
          f"{len(equivalent)} equivalent.")
    return 1 if unnoticed else 2 if mistakes else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Mistake as mistake:
        sys.exit(print(mistake, file=sys.stderr) or 2)

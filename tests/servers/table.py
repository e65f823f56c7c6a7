#!/usr/bin/env python3
"""Prints what servers-tests saw, as a table of servers and commands, and compares it with the README's.

Exits with 1 when a cell is not "ok", or when the README has another table. --update writes it into the README.
"""
import argparse
import json
import pathlib
import re
import sys

SERVERS = {
    "Apache": "Apache, `DavDepthInfinity On`",
    "ApacheByDefault": "Apache as it comes",
    "Lighttpd": "lighttpd",
    "Nginx": "nginx with dav-ext",
    "Rclone": "`rclone serve webdav`",
    "SabreDav": "sabre/dav under PHP",
    "SabreTags": "sabre/dav with tags of folders",
    "StandIn": "the stand-in",
}
# A cell is made of several tests.
COLUMNS = {
    "ls, stat of both kinds": ["ListsAndDescribesFoldersAndFiles"],
    "tree, du": ["ListsAndCountsATree"],
    "push, changed files": [
        "PushesAFolderAndWhatChangesInIt",
        "PushesIntoAFolderThatItMakes",
        "PushesNothingOverWhatSomebodyElseHasChanged",
        "PushesNothingOverWhatSomebodyElseWritesMeanwhile",
    ],
    "pull, again, conflict": ["PullsAFolderAndWhatChangesInIt", "PullKeepsBothSidesOfAConflict"],
    "sync, again": ["SyncsWhatChangesOnEitherSide", "SyncsByNoMoreRequestsThanChangesNeed"],
    "mv, rm, mkdir -p": ["MovesFoldersAndFiles", "RemovesFoldersAndFiles", "MakesFoldersAndThoseAboveThem"],
    "get, put": [
        "GetsFilesOneByOne",
        "PutsFilesOneByOne",
        "CopiesFoldersAndFiles",
        "KeepsTheExecutableBitWhereItCan",
        "KeepsTheDateWhereItCan",
    ],
}
SECTION = re.compile(r"(?<=<!-- servers: made by tests/servers/table\.py -->\n).*?(?=<!-- servers: end -->)", re.DOTALL)


def tests_of(results, server):
    """The tests of a server that ran, by name."""
    file = results / f"{server}.json"
    suites = json.loads(file.read_text())["testsuites"] if file.exists() else []
    return {test["name"].split("/")[0]: test for suite in suites for test in suite["testsuite"]}


def cell(tests, names):
    """What is written into the table: "ok", or what did not hold first."""
    for name in names:
        test = tests.get(name)
        if test is None:
            return "did not run"
        if "failures" in test:
            return test.get("failed", "failed")
    return "ok"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("readme", type=pathlib.Path)
    parser.add_argument("results", type=pathlib.Path, help="where servers-tests left a file of JSON for each server")
    parser.add_argument("--update", action="store_true", help="write the table into the README")
    arguments = parser.parse_args()

    tests = {server: tests_of(arguments.results, server) for server in SERVERS}
    named = {name for names in COLUMNS.values() for name in names}
    unknown = {name for of_server in tests.values() for name in of_server} - named
    if unknown:
        sys.exit(f"No column has {', '.join(sorted(unknown))}")
    cells = {server: [cell(tests[server], names) for names in COLUMNS.values()] for server in SERVERS}
    rows = [["", *COLUMNS], ["---"] * (1 + len(COLUMNS)), *([title, *cells[server]] for server, title in SERVERS.items())]
    table = "".join("| " + " | ".join(row) + " |\n" for row in rows)
    print(table, end="")

    readme = arguments.readme.read_text()
    if arguments.update:
        arguments.readme.write_text(SECTION.sub(lambda _: table, readme))
    elif SECTION.findall(readme) != [table]:
        print(f"{arguments.readme} has another table; {sys.argv[0]} --update writes this one.")
        return 1
    return 0 if all(text == "ok" for row in cells.values() for text in row) else 1


if __name__ == "__main__":
    sys.exit(main())

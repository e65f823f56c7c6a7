#!/usr/bin/env python3
"""Usage: describe-abi.py ROOT LIBRARY

Prints what LIBRARY, built of the sources below ROOT with debug information, offers to what is built against its public
headers: the size of every class, what lies at which byte of it, which operation has which place in its virtual table, the
values of enumerations, and the public symbols of the host's part. It is what abidw reads out of the library, without what belongs to Qt and to
the standard library: what is left is short enough for a person to compare.
"""

import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path


def public_headers(root):
    exported = [header for header in root.glob("dvsync/**/*.h") if "DVSYNC_EXPORT" in header.read_text(encoding="utf-8")]
    return {header.resolve() for header in [*root.glob("host/**/*.h"), *exported]}


def abi_of(library):
    return ElementTree.fromstring(subprocess.run(["abidw", library], check=True, stdout=subprocess.PIPE).stdout)


def demangled(names):
    result = subprocess.run(["c++filt"], input="\n".join(names), check=True, stdout=subprocess.PIPE, text=True)
    return dict(zip(names, result.stdout.split("\n")))


class Abi:
    def __init__(self, corpus, headers):
        # Files go by several names, as they are included.
        files = {element.get("filepath") for element in corpus.iter()} - {None}
        self.public_files = {file for file in files if Path(file).resolve() in headers}
        self.types = {}
        self.lines = set()
        functions = {element.get("mangled-name") for element in corpus.iter("function-decl")} - {None}
        self.signatures = demangled(sorted(functions))
        for unit in corpus.iter("abi-instr"):
            self._collect(unit, "")
        for scope, element in list(self.types.values()):
            self._describe(scope, element)
        symbols = demangled(sorted({element.get("name") for element in corpus.iter("elf-symbol")}))
        # Those of the library itself have a list of their own.
        self.lines |= {f"symbol {symbol}" for symbol in symbols.values() if re.match(r"([a-z ]+ for )?sync::(?!dv::)", symbol)}

    def _collect(self, parent, scope):
        for element in parent:
            name = element.get("name", "")
            if "id" in element.attrib:
                known = self.types.get(element.get("id"))
                if not known or known[1].get("is-declaration-only"):
                    self.types[element.get("id")] = (scope, element)
            if element.tag in ("namespace-decl", "class-decl", "union-decl"):
                self._collect(element, scope + name + "::")
            elif element.tag == "member-type":
                self._collect(element, scope)

    def _name(self, identifier):
        scope, element = self.types[identifier]
        of = element.get("type-id")
        if element.tag == "qualified-type-def":
            return self._name(of) + "".join(f" {word}" for word in ("const", "volatile") if element.get(word))
        if element.tag == "pointer-type-def":
            return self._name(of) + "*"
        if element.tag == "reference-type-def":
            return self._name(of) + ("&" if element.get("kind") == "lvalue" else "&&")
        return scope + element.get("name", element.tag)

    def _describe(self, scope, element):
        name = scope + element.get("name", "")
        if element.get("filepath") not in self.public_files or element.get("is-declaration-only"):
            return
        if element.tag == "enum-decl":
            for value in element.iter("enumerator"):
                self.lines.add(f"{name}: {int(value.get('value')):3} {value.get('name')}")
        if element.tag != "class-decl":
            return
        self.lines.add(f"{name}: {int(element.get('size-in-bits', 0)) // 8} bytes")
        for base in element.findall("base-class"):
            self.lines.add(f"{name}: byte {int(base.get('layout-offset-in-bits', 0)) // 8:3} base {self._name(base.get('type-id'))}")
        for member in element.findall("data-member"):
            if not member.get("static"):
                variable = member.find("var-decl")
                self.lines.add(f"{name}: byte {int(member.get('layout-offset-in-bits')) // 8:3} "
                               f"{self._name(variable.get('type-id'))} {variable.get('name')}")
        for member in element.findall("member-function"):
            function = member.find("function-decl")
            # The place of a destructor, -1, is not told.
            if int(member.get("vtable-offset", -1)) >= 0:
                signature = self.signatures.get(function.get("mangled-name"), function.get("name"))
                self.lines.add(f"{name}: slot {int(member.get('vtable-offset')):3} "
                               f"{self._name(function.find('return').get('type-id'))} {signature}")


def main():
    root, library = map(Path, sys.argv[1:])
    print("\n".join(sorted(Abi(abi_of(library), public_headers(root)).lines)))


if __name__ == "__main__":
    main()

"""Documents to import: an exported one with changes that an owner, another program, a bad disk or
somebody who means harm could have made."""

from __future__ import annotations

import random
import re
import xml.etree.ElementTree
from collections.abc import Iterator
from dataclasses import dataclass, field
from xml.sax.saxutils import escape

NUMBERS = (
    *("0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "13", "35", "36", "99", "255", "256"),
    *("999", "8191", "8192", "10600", "11700", "65535", "65536", "474000", "2147483647"),
    *("-1", "-2", "-0", "-65535", "-2147483648", "1.5", "1e3", "0x10", "007", "+5", "1,000"),
    *(" 5", "5 ", "\n5\n", "\t7", "5 6", "12abc", "abc", "", " ", "--1", "1-", "\u0665"),
)
WIDE_NUMBERS = (
    *("2147483648", "-2147483649", "4294967295", "4294967296", "9223372036854775807"),
    *("9223372036854775808", "-9223372036854775809", "99999999999999999999999"),
)
CODES = (
    *("vertical", "horizontal", "VERTICAL", "Horizontal", "circular", "low", "high", "HIGH"),
    *("6 MHz", "7 MHz", "8 MHz", "8MHz", "8 mhz", "High Priority", "low priority", "auto", "AUTO"),
    *("gold", "root", "Gold", "2K", "8K", "2k", "8k", "4K", "1/32", "1/16", "1/8", "1/4", "1/5"),
    *("QPSK", "qpsk", "16 QAM", "32 QAM", "64 QAM", "128 QAM", "256 QAM", "64QAM", "256 qam"),
    *("1/2", "2/3", "3/4", "5/6", "7/8", "9/10", "Normal", "Reversed", "reversed", "inverted"),
    *("even", "odd", "toggle", "Toggle", "true", "false", "yes", "VSecure", "vsecure", "Not Found"),
    *("Europe/Paris", "Asia/Tokyo", "es", "EN", "DE", "10.0.0.1", "999.1.1.1", "03", "spa"),
)
TEXTS = (
    *("&", "<", ">", '"', "'", "%", "%s%n%d", "100%", "%%", "]]>", "<!-- -->", "&amp;", "' OR 1"),
    *("'; DROP TABLE VSecure; --", "ñ", "漢字", "\U0001f4fa", "a\nb", "\\", "$(reboot)", "`ls`"),
    *("x" * 127, "x" * 300, "y " * 5000, "\x7f", "Ω%Q%q", "  padded  "),
)
RAW_CONTENT = (
    *("<![CDATA[7]]>", "<![CDATA[<a>&]]>", "<!-- note -->5", "<?pi x?>3", "&#55;", "&#x31;2"),
    *("&#0;", "&unknown;", "&amp", "<unknown>1</unknown>", "5<b/>6", "<b/>7", "text", "&lt;&gt;"),
    *("<![CDATA[]]>", "<![CDATA[a]]>b", "1<!-- -->2", "&#1114112;", "&#xD800;", "&#256;"),
)
NAMES = ("unknown", "id", "ID", "name", "active", "type", "mac", "cam", "x-y", "ñ", "a:b", "_1")

# A part of a document is chosen first, so that a section of thousands of elements is not changed
# more often than one of three.
PARTS_OF_MODULES = ("module", "input", "output", "service", "pidOrder")


@dataclass
class Element:
    name: str
    text: str = ""  # as it stands in the file
    children: list[Element] = field(default_factory=list)
    attributes: str = ""

    def all(self) -> Iterator[Element]:
        yield self
        for child in self.children:
            yield from child.all()

    def write(self, out: list[str], separator: str) -> None:
        if not self.text and not self.children:
            out.append(f"<{self.name}{self.attributes}/>")
        else:
            out.append(f"<{self.name}{self.attributes}>{self.text}")
            for child in self.children:
                out.append(separator)
                child.write(out, separator)
            out.append(f"{separator if self.children else ''}</{self.name}>")

    def copy(self) -> Element:
        return Element(
            self.name, self.text, [child.copy() for child in self.children], self.attributes
        )


def parsed(document: bytes) -> Element | None:
    def element(source: xml.etree.ElementTree.Element) -> Element:
        children = [element(child) for child in source]
        return Element(source.tag, "" if children else escape(source.text or ""), children)

    try:
        return element(xml.etree.ElementTree.fromstring(document))
    except (xml.etree.ElementTree.ParseError, ValueError, LookupError):
        return None


class Mutation:
    """Changes a document; `notes` says how, `tags` what may differ for it."""

    def __init__(self, rng: random.Random) -> None:
        self.random = rng
        self.notes: list[str] = []
        self.tags: set[str] = set()

    def changed(self, document: bytes, amount: int, *, bytes_too: bool) -> bytes:
        root = parsed(document)
        if root is not None and amount > 0:
            for _ in range(amount):
                self.change(root)
            out = ['<?xml version="1.0" encoding="utf-8"?>\n']
            root.write(out, self.random.choice(("", "\n", "\n\t")))
            document = "".join(out).encode("utf-8", "surrogateescape")
        return self.damaged(document) if bytes_too else document

    # The tree.

    def change(self, root: Element) -> None:
        parent, target = self.target(root)
        kinds = (
            *(self.value,) * 12,
            *(self.blank_value, self.raw_value, self.raw_value, self.letter_case, self.empty),
            *(self.removed, self.removed, self.doubled, self.doubled, self.changed_double),
            *(self.reordered, self.renamed, self.name_case, self.moved, self.emptied, self.added),
            *(self.attribute, self.text_between, self.swapped_value),
            *(self.respelled, self.respelled, self.varied, self.varied),
            *((self.deep,) if self.random.random() < 0.05 else ()),
        )
        kind = self.random.choice(kinds)
        self.notes.append(f"{kind.__name__} {parent.name}/{target.name}")
        kind(root, parent, target)

    def target(self, root: Element) -> tuple[Element, Element]:
        """An element and its parent. Every kind of part is as likely as every other."""
        parts: dict[str, list[Element]] = {}
        for section in self.sections(root):
            if section.name != "modules":
                parts.setdefault(section.name, []).append(section)
                continue
            for element in section.all():
                if element.name.removesuffix("s") in PARTS_OF_MODULES:
                    parts.setdefault("modules " + element.name, []).append(element)
        if not parts:
            return root, root
        part = self.random.choice(parts[self.random.choice(sorted(parts))])
        if self.random.random() < 0.1:
            owner = next((e for e in root.all() if any(c is part for c in e.children)), root)
            return owner, part
        inner = [(owner, child) for owner in self.part_of(part) for child in owner.children]
        return self.random.choice(inner) if inner else (root, part)

    def sections(self, root: Element) -> list[Element]:
        if root.name == "configuration":
            return root.children
        return [section for child in root.children for section in child.children or [child]]

    def part_of(self, part: Element) -> list[Element]:
        """The elements of a part without those that are parts of their own."""
        found = [part]
        for child in part.children:
            if child.children and child.name.removesuffix("s") not in PARTS_OF_MODULES:
                found += self.part_of(child)
        return found

    def a_value(self, old: str) -> str:
        kind = self.random.randrange(10)
        if kind < 4:
            if self.random.random() < 0.06:
                self.tags.add("wide-numbers")
                return self.random.choice(WIDE_NUMBERS)
            return self.random.choice(NUMBERS)
        if kind == 4:
            return str(self.random.randint(-10, 70000))
        if kind == 5 and re.fullmatch(r"-?\d{1,9}", old):
            return str(int(old) + self.random.choice((-1, 1, 2, 10, 100)))
        if kind < 8:
            return self.random.choice(CODES)
        if kind == 8:
            return escape(self.random.choice(TEXTS))
        return escape(old + self.random.choice(TEXTS))

    def leaf(self, target: Element) -> Element:
        return self.random.choice([e for e in target.all() if not e.children])

    def value(self, root: Element, parent: Element, target: Element) -> None:
        leaf = self.leaf(target)
        leaf.text = self.a_value(leaf.text)
        self.notes[-1] += f" {leaf.name}={leaf.text[:30]!r}"

    def swapped_value(self, root: Element, parent: Element, target: Element) -> None:
        """The value of another element of the same name: valid, but not here."""
        leaf = self.leaf(target)
        leaf.text = self.random.choice([e for e in root.all() if e.name == leaf.name]).text

    def respelled(self, root: Element, parent: Element, target: Element) -> None:
        """Many numbers as they are, written otherwise: what compares texts tells them apart."""
        forms = ("0{}", "00{}", "+{}", " {}", "{} ", "{}.0", "{}abc")
        share = self.random.choice((0.05, 0.3, 1.0))
        for leaf in (e for e in root.all() if re.fullmatch(r"[0-9]{1,7}", e.text)):
            if self.random.random() < share:
                leaf.text = self.random.choice(forms).format(leaf.text)

    def varied(self, root: Element, parent: Element, target: Element) -> None:
        """Many values of their kind: a document that is mostly valid and changes everything."""
        share = self.random.choice((0.02, 0.1, 0.5))
        values: dict[str, list[str]] = {}
        leaves = [e for e in root.all() if not e.children]
        for leaf in leaves:
            values.setdefault(leaf.name, []).append(leaf.text)
        for leaf in leaves:
            if leaf.name != "mac" and self.random.random() < share:
                leaf.text = self.random.choice(values[leaf.name])

    def blank_value(self, root: Element, parent: Element, target: Element) -> None:
        leaf = self.leaf(target)
        leaf.text = self.random.choice((" {}", "{} ", "\n{}\n", "\t{}", "  {}  ")).format(leaf.text)

    def raw_value(self, root: Element, parent: Element, target: Element) -> None:
        self.leaf(target).text = self.random.choice(RAW_CONTENT)

    def letter_case(self, root: Element, parent: Element, target: Element) -> None:
        leaf = self.leaf(target)
        leaf.text = self.random.choice((str.upper, str.lower, str.swapcase))(leaf.text)

    def empty(self, root: Element, parent: Element, target: Element) -> None:
        self.leaf(target).text = ""

    def emptied(self, root: Element, parent: Element, target: Element) -> None:
        target.text, target.children = "", []

    def removed(self, root: Element, parent: Element, target: Element) -> None:
        parent.children = [child for child in parent.children if child is not target]

    def place(self, parent: Element, new: Element) -> None:
        parent.children.insert(self.random.randint(0, len(parent.children)), new)

    def doubled(self, root: Element, parent: Element, target: Element) -> None:
        for _ in range(self.random.choice((1, 1, 2, 8))):
            self.place(parent, target.copy())

    def changed_double(self, root: Element, parent: Element, target: Element) -> None:
        new = target.copy()
        leaf = self.leaf(new)
        leaf.text = self.a_value(leaf.text)
        self.place(parent, new)

    def reordered(self, root: Element, parent: Element, target: Element) -> None:
        self.random.shuffle(self.random.choice((parent, target)).children)

    def renamed(self, root: Element, parent: Element, target: Element) -> None:
        names = sorted({element.name for element in root.all()})
        target.name = self.random.choice((self.random.choice(names), self.random.choice(NAMES)))

    def name_case(self, root: Element, parent: Element, target: Element) -> None:
        target.name = self.random.choice((str.upper, str.lower, str.swapcase))(target.name)

    def moved(self, root: Element, parent: Element, target: Element) -> None:
        """Into another element, or into another section."""
        inside = set(map(id, target.all()))
        others = [e for e in root.all() if e.children and id(e) not in inside]
        if others:
            self.removed(root, parent, target)
            self.place(self.random.choice(others), target)

    def added(self, root: Element, parent: Element, target: Element) -> None:
        name = self.random.choice((self.random.choice(NAMES), target.name))
        self.place(self.random.choice((parent, target)), Element(name, self.a_value("")))

    def attribute(self, root: Element, parent: Element, target: Element) -> None:
        target.attributes = self.random.choice((' a="1"', " a='<' b=\"'\"", " a", ' id="&#33;"'))

    def text_between(self, root: Element, parent: Element, target: Element) -> None:
        owner = self.random.choice((parent, target))
        text = self.random.choice(("stray", " 5 ", "<!-- note -->", "<![CDATA[x]]>", "<?pi?>"))
        owner.text += text

    def deep(self, root: Element, parent: Element, target: Element) -> None:
        depth = self.random.choice((50, 300, 20000, 150000))
        target.children = []
        target.text = "<d>" * depth + "</d>" * depth
        self.tags.add("deep-nesting")

    # The headend's modules.

    def other_modules(self, document: bytes, macs: list[str]) -> bytes:
        """Modules replaced, exchanged, missing or more of them than the device has."""
        root = parsed(document)
        if root is None:
            return document
        for modules in [element for element in root.all() if element.name == "modules"]:
            found = [child for child in modules.children if child.name == "module"]
            kind = self.random.randrange(6)
            self.notes.append(f"other modules {kind}")
            if kind == 0:
                self.random.shuffle(modules.children)
            elif kind == 1 and found:
                modules.children.remove(self.random.choice(found))
            elif kind == 2 and found:
                new = self.random.choice(found).copy()
                self.set_mac(new, macs)
                self.place(modules, new)
            else:
                for module in found:
                    if kind == 3 or self.random.random() < 0.5:
                        self.set_mac(module, macs)
        out = ['<?xml version="1.0" encoding="utf-8"?>\n']
        root.write(out, "\n")
        return "".join(out).encode("utf-8", "surrogateescape")

    def set_mac(self, module: Element, macs: list[str]) -> None:
        new = f"02:00:{self.random.randrange(256):02X}:CC:0D"
        known = self.random.choice(macs or [new])
        for element in module.children:
            if element.name == "mac":
                element.text = self.random.choice((new, new, new, known, known.lower(), "", "x"))

    # The file.

    def damaged(self, document: bytes) -> bytes:
        kinds = (
            self.cut, self.cut, self.flipped, self.without, self.inserted, self.latin,
            self.wide_encoding, self.marked, self.line_ends, self.with_doctype, self.wrapped,
            self.twice, self.nothing, self.with_nul,
        )  # fmt: skip
        kind = self.random.choice(kinds)
        self.notes.append(kind.__name__)
        return kind(document)

    def somewhere(self, document: bytes) -> int:
        return self.random.randrange(len(document) + 1)

    def cut(self, document: bytes) -> bytes:
        return document[: self.somewhere(document)]

    def flipped(self, document: bytes) -> bytes:
        changed = bytearray(document)
        for _ in range(self.random.choice((1, 2, 10)) if document else 0):
            changed[self.random.randrange(len(changed))] = self.random.randrange(1, 256)
        return bytes(changed)

    def without(self, document: bytes) -> bytes:
        start = self.somewhere(document)
        return document[:start] + document[start + self.random.choice((1, 5, 100, 3000)) :]

    def inserted(self, document: bytes) -> bytes:
        start = self.somewhere(document)
        pieces = (b"<", b">", b"&", b"</", b"<!--", b"]]>", b"\xff", b"<a>", b"/")
        piece = self.random.choice(pieces)
        return document[:start] + piece + document[start:]

    def latin(self, document: bytes) -> bytes:
        return document.decode("utf-8", "replace").encode("latin-1", "replace")

    def wide_encoding(self, document: bytes) -> bytes:
        return document.decode("utf-8", "replace").encode(self.random.choice(("utf-16", "utf-32")))

    def marked(self, document: bytes) -> bytes:
        return b"\xef\xbb\xbf" + document

    def line_ends(self, document: bytes) -> bytes:
        return document.replace(b"\n", self.random.choice((b"\r\n", b"\r")))

    def with_doctype(self, document: bytes) -> bytes:
        head, end, rest = document.partition(b"?>")
        return head + end + b'<!DOCTYPE configuration [<!ENTITY e "x">]><!-- c -->' + rest

    def wrapped(self, document: bytes) -> bytes:
        name = self.random.choice((b"backup", b"configuration", b"other", b"vsecureCAMList"))
        head, end, rest = document.partition(b"?>")
        return head + end + b"<" + name + b">" + rest + b"</" + name + b">"

    def twice(self, document: bytes) -> bytes:
        return document + document.partition(b"?>")[2]

    def nothing(self, document: bytes) -> bytes:
        return self.random.choice((b"", b" ", b"\n", b"x", b"<", b"<configuration/>", b"<a/>"))

    def with_nul(self, document: bytes) -> bytes:
        start = self.somewhere(document)
        return document[:start] + b"\0" + document[start:]

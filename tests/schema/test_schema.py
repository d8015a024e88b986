"""The schemas against the program: what it exports is valid, and what the schema of the import
refuses is refused by the program or explained by what the manual lists."""

from __future__ import annotations

import random
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.dom.minidom
import xml.etree.ElementTree
import xml.parsers.expat
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing
from pathlib import Path
from xml.dom.minidom import Node

TESTS = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "compare")]

from e2e import CONFIG_DB, PROGRAM, REPOSITORY, STATE_DB, VSEC_DB, Device, golden, models  # noqa: E402
from headends import headend  # noqa: E402
from mutations import Mutation  # noqa: E402
from round_trip import with_input_types  # noqa: E402

EXPORTS = 1000
MUTATIONS = 300
AT_ONCE = 32  # imports mostly sleep
DOCUMENT = "/tmp/document.xml"
RNG = "{http://relaxng.org/ns/structure/1.0}"


def schema(kind: str, form: str = "rng") -> Path:
    return REPOSITORY / f"schema/tarvo-config-{kind}.{form}"


# --- The two validators --------------------------------------------------------------------------


def refused_by_jing(kind: str, files: list[Path]) -> dict[Path, str]:
    """The first error of each file that is not valid. At one that is not XML it ends."""
    command = ["jing", schema(kind), *files]
    result = subprocess.run(command, capture_output=True, text=True, errors="replace")
    found = re.findall(r"(?m)^(/.*?):\d+:\d+: ((?:error|fatal): .*)$", result.stdout)
    refused: dict[Path, str] = {}
    for name, error in found:
        refused.setdefault(Path(name), error)
    unread = any(error.startswith("fatal") and Path(name) != files[-1] for name, error in found)
    if (result.returncode != 0) != bool(refused) or not set(refused) <= set(files) or unread:
        raise RuntimeError(f"jing: {result.returncode} {result.stdout[-2000:]} {result.stderr}")
    return refused


def refused_by_xmllint(kind: str, files: list[Path]) -> set[Path]:
    command = ["xmllint", "--noout", "--huge", "--relaxng", schema(kind), *files]
    result = subprocess.run(command, capture_output=True, text=True, errors="replace")
    valid = {Path(name) for name in re.findall(r"(?m)^(/.*) validates$", result.stderr)}
    return set(files) - valid


# --- How the import reads a document -------------------------------------------------------------


class Pattern:
    """An element of the import's schema."""

    def __init__(self, grammar: dict[str, xml.etree.ElementTree.Element], element) -> None:
        self.name = element.get("name")
        self.children: dict[str, Pattern] = {}
        self.values: list[str] = []
        self.is_number = False
        self.is_anything = False
        for part in element:
            self._read(grammar, part)

    def _read(self, grammar: dict[str, xml.etree.ElementTree.Element], part) -> None:
        tag = part.tag.removeprefix(RNG)
        if tag == "element":
            if part.get("name"):  # others are unknown elements
                self.children.setdefault(part.get("name"), Pattern(grammar, part))
        elif tag == "ref" and part.get("name") == "anything":
            self.is_anything = True
        elif tag == "ref" and part.get("name") != "attributes":
            for inner in grammar[part.get("name")]:
                self._read(grammar, inner)
        elif tag == "data":
            self.is_number |= part.get("type") == "integer"
        elif tag == "value":
            self.values.append(part.text or "")
        elif tag != "attribute":
            for inner in part:
                self._read(grammar, inner)


def import_patterns() -> dict[str, Pattern]:
    root = xml.etree.ElementTree.parse(schema("import")).getroot()
    grammar = {define.get("name"): define for define in root.iter(RNG + "define")}
    return {
        name: Pattern(grammar, grammar[name].find(RNG + "element"))
        for name in ("configuration", "backup")
    }


# Of several, the import takes one.
FIRST = {
    "backup": {"configuration", "vsecureCAMList"},
    "input": {"inputId", "type"},
    "output": {"outputId"},
    "service": {"outputId", "outputSid"},
}
LAST = {"service": {"pidOrders"}, "serviceEPG": {"audiosEPGs", "replacingEPGs"}}


def read_text(element) -> str:
    pieces = [n for n in element.childNodes if n.nodeType in (Node.TEXT_NODE, Node.CDATA_SECTION_NODE)]
    plain = [n.data for n in pieces if n.nodeType == Node.TEXT_NODE and n.data.strip()]
    if plain:
        return plain[0]
    first = [n for n in element.childNodes if n.nodeType in (Node.ELEMENT_NODE, Node.CDATA_SECTION_NODE)]
    return first[0].data if first and first[0].nodeType == Node.CDATA_SECTION_NODE else ""


def read_number(text: str) -> str:
    if re.fullmatch(r"[ \t\n\r]*[+-]?[0-9]+[ \t\n\r]*", text):
        return text
    number = re.match(r"[ \t\n\v\f\r]*([+-]?[0-9]+)", text)
    return number[1] if number else "0"


def read_as_import_does(document, element, pattern: Pattern) -> None:
    """Leaves of the element what the import reads, as a schema wants it written."""
    if pattern.is_anything:
        return
    if not pattern.children:
        text = read_text(element)
        if pattern.is_number and text not in pattern.values:
            text = read_number(text)
        for child in list(element.childNodes):
            element.removeChild(child)
        element.appendChild(document.createTextNode(text))
        return
    names = {name.lower(): name for name in pattern.children}
    exact = pattern.name == "backup"
    found: dict[str, list] = {}
    for child in [n for n in element.childNodes if n.nodeType == Node.ELEMENT_NODE]:
        known = pattern.children.get(
            child.tagName if exact else names.get(child.tagName.lower(), "")
        )
        if known is None:
            continue
        child.tagName = child.nodeName = known.name
        found.setdefault(known.name, []).append(child)
        read_as_import_does(document, child, known)
    for name, children in found.items():
        unread = []
        if name in FIRST.get(pattern.name, ()):
            unread = children[1:]
        elif name in LAST.get(pattern.name, ()):
            unread = children[:-1]
        elif name == "rfLoop":
            unread = children
        for child in unread:
            element.removeChild(child)


# --- Devices -------------------------------------------------------------------------------------


def fill(device: Device, sql: dict[str, str]) -> None:
    paths = {"config_global": CONFIG_DB, "temp_global": STATE_DB, "vsec_global": VSEC_DB}
    for name, path in paths.items():
        with closing(device.database(path)) as database:
            database.executescript(f"PRAGMA synchronous = OFF; BEGIN; {sql[name]} COMMIT;")


def input_types(device: Device) -> list[int]:
    with closing(device.database(CONFIG_DB)) as database:
        rows = database.execute(
            """SELECT coalesce(tipoEntrada, 0) FROM EntradasGlobal JOIN RedesModulos USING (MAC)
               ORDER BY idRedMod, idEntradasGlobal"""
        )
        return [number for (number,) in rows]


class SchemaTest(unittest.TestCase):
    maxDiff = 4000

    def setUp(self) -> None:
        memory = "/dev/shm" if Path("/dev/shm").is_dir() else None
        folder = tempfile.TemporaryDirectory(prefix="schema-", dir=memory)
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.documents = self.folder / "documents"
        self.documents.mkdir()

    def sample(self, model: str) -> Device:
        return Device.create(model, self.folder / model)

    def written(self, name: str, text: bytes) -> Path:
        path = self.documents / name
        path.write_bytes(text)
        return path

    def import_status(self, sample: Device, text: bytes, name: str) -> int:
        device = Device(shutil.copytree(sample.root, self.folder / name, symlinks=True))
        device.path(DOCUMENT).write_bytes(text)
        status = device.run(PROGRAM, [DOCUMENT], env={"TZ": "UTC"}, timeout=240).status
        shutil.rmtree(device.root)
        return status

    def assertValid(self, kind: str, files: list[Path]) -> None:
        self.assertEqual({}, refused_by_jing(kind, files))
        self.assertEqual(set(), refused_by_xmllint(kind, files))

    # The files.

    def test_xml_forms_are_made_from_the_compact_ones(self) -> None:
        for kind in ("export", "import"):
            made = self.folder / f"{kind}.rng"
            subprocess.run(["trang", schema(kind, "rnc"), made], check=True)
            self.assertEqual(
                made.read_text("utf-8"),
                schema(kind).read_text("utf-8"),
                "run scripts/document-schema",
            )

    # Exports.

    def test_golden_documents_are_valid(self) -> None:
        self.assertValid("export", [TESTS / f"e2e/golden/{model}.xml" for model in models()])

    def test_exports_of_made_up_headends_are_valid(self) -> None:
        def exported(model: str) -> tuple[list[Path], list[Path]]:
            device = self.sample(model)
            exports, imports = [], []
            for seed in range(EXPORTS // len(models()) + 1):
                fill(device, headend(model, seed))
                text = device.run(PROGRAM, env={"TZ": "UTC"}, timeout=240).stdout
                exports.append(self.written(f"{model}-{seed}.xml", text))
                if model == "RNB-K408":
                    text = with_input_types(text, input_types(device))
                imports.append(self.written(f"{model}-{seed}-import.xml", text))
            return exports, imports

        with ThreadPoolExecutor(len(models())) as pool:
            found = list(pool.map(exported, models()))
        exports = [path for each, _ in found for path in each]
        self.assertGreaterEqual(len(exports), EXPORTS)
        self.assertValid("export", exports)
        # Such headends are made so that the import takes their exports.
        self.assertValid("import", [path for _, each in found for path in each])

    def test_documents_of_another_model_are_told_apart(self) -> None:
        text = golden("WVX-BQ4")
        moved = text.replace(b"<modules>", b"<diseqcs/><modules>")
        self.assertNotEqual(text, moved)
        self.assertIn(
            self.written("other.xml", moved),
            refused_by_jing("export", [self.documents / "other.xml"]),
        )

    # Imports.

    def explained(self, name: str, text: bytes, patterns: dict[str, Pattern]) -> Path | None:
        """The document as the import reads it, None when that is no matter of a schema."""
        document = xml.dom.minidom.parseString(text)
        root = document.documentElement
        if root.tagName not in patterns:
            return None
        read_as_import_does(document, root, patterns[root.tagName])
        return self.written(name, document.toxml("utf-8"))

    def test_changed_documents_that_are_refused_are_refused_by_the_program_or_explained(
        self,
    ) -> None:
        samples = {model: self.sample(model) for model in models()}
        texts: list[tuple[str, bytes]] = []
        number = 0
        while len(texts) < MUTATIONS:
            rng = random.Random(f"schema {number}")
            number += 1
            model = rng.choice(models())
            text = golden(model)
            if model == "RNB-K408":
                text = with_input_types(text, input_types(samples[model]))
            mutation = Mutation(rng)
            text = mutation.changed(text, rng.choice((1, 1, 2, 3)), bytes_too=False)
            try:
                xml.dom.minidom.parseString(text)
            except (xml.parsers.expat.ExpatError, ValueError):
                continue
            if "deep-nesting" not in mutation.tags:
                texts.append((model, text))
        files = [self.written(f"{place}.xml", text) for place, (_, text) in enumerate(texts)]
        refused = refused_by_jing("import", files)
        with ThreadPoolExecutor(AT_ONCE) as pool:
            statuses = list(
                pool.map(
                    lambda place: self.import_status(
                        samples[texts[place][0]], texts[place][1], f"device-{place}"
                    ),
                    range(len(texts)),
                )
            )
        patterns = import_patterns()
        taken = [place for place, path in enumerate(files) if not statuses[place]]
        # Else this would tell nothing.
        self.assertGreater(len(taken), MUTATIONS // 10)
        self.assertGreater(len(refused), MUTATIONS // 10)
        read = {}
        for place in taken:
            if files[place] in refused:
                path = self.explained(f"{place}-read.xml", texts[place][1], patterns)
                self.assertIsNotNone(path, texts[place])
                read[path] = refused[files[place]]
        again = refused_by_jing("import", list(read)) if read else {}
        self.assertEqual({}, {path: (read[path], error) for path, error in again.items()})

    def cases(self, cases: list[tuple[str, bytes, bytes]]) -> list[tuple[str, bytes, int, bool]]:
        """Of changes to one document: label, text, the program's status, the schema's refusal."""
        sample = self.sample("QRA-310")
        base = golden("QRA-310")
        texts = []
        for label, old, new in cases:
            self.assertIn(old, base, label)
            texts.append(base.replace(old, new, 1))
        files = [self.written(f"{place}.xml", text) for place, text in enumerate(texts)]
        refused = refused_by_jing("import", files)
        with ThreadPoolExecutor(AT_ONCE) as pool:
            statuses = pool.map(
                lambda place: self.import_status(sample, texts[place], f"device-{place}"),
                range(len(texts)),
            )
        return [
            (case[0], text, status, path in refused)
            for case, text, status, path in zip(cases, texts, statuses, files)
        ]

    def test_documents_that_both_take(self) -> None:
        line = b"""<?xml-model href="x.rng" schematypens="http://relaxng.org/ns/structure/1.0"?>"""
        found = self.cases(
            [
                ("unchanged", b"<module>", b"<module>"),
                ("an editor's line", b"<configuration>", line + b"<configuration>"),
                ("an attribute", b"<module>", b"<module checked='yes'>"),
                ("an unknown element", b"<module>", b"<module><note>attic <b/></note>"),
                ("text between elements", b"<module>", b"<module>attic"),
                ("a code's letter case", b"<band>low</band>", b"<band>LOW</band>"),
            ]
        )
        self.assertEqual([], [case for case in found if case[2] != 0 or case[3]])

    def test_what_the_manual_lists_is_taken_by_the_program_and_refused_by_the_schema(self) -> None:
        attenuation = re.search(rb"<attenuation>.*?</attenuation>", golden("QRA-310"))[0]
        explained = [
            ("letter case", b"<diseqcs>", b"<diseqcs><DISEQC><ID>77</ID></DISEQC>"),
            ("comment", b"<inputId>1<", b"<inputId>1<!-- or -->2<"),
            ("CDATA", b"<inputId>1<", b"<inputId>1<![CDATA[2]]><"),
            ("element", attenuation, b"<attenuation>5<b/></attenuation>"),
            ("no whole number", attenuation, b"<attenuation>5 dB</attenuation>"),
            ("no number", attenuation, b"<attenuation>none</attenuation>"),
            ("twice", b"<inputId>1</inputId>", b"<inputId>1</inputId><inputId>7</inputId>"),
            ("loop of input 1", b"<inputId>1</inputId>", b"<inputId>1</inputId><rfLoop>5</rfLoop>"),
        ]
        patterns = import_patterns()
        # The last one, where jing ends.
        malformed = ("not well-formed", attenuation, attenuation.replace(b"/a", b"/b"))
        found = self.cases([*explained, malformed])
        self.assertEqual([], [case for case in found if case[2] != 0 or not case[3]])
        read = [
            self.explained(f"{place}-read.xml", case[1], patterns)
            for place, case in enumerate(found[:-1])
        ]
        self.assertEqual({}, refused_by_jing("import", read))

    def test_what_the_program_refuses_in_any_headend_is_refused_by_the_schema(self) -> None:
        found = self.cases(
            [
                ("no modules list", b"<modules>", b"<modules><modules/>"),
                ("identifier above its range", b"<sid>30001<", b"<sid>65536<"),
                ("identifier below its range", b"<lcn>1<", b"<lcn>0<"),
                ("no identifier", b"<tsid>1072</tsid>\n\t\t\t<sid>", b"<tsid/>\n\t\t\t<sid>"),
                ("input's number", b"<inputId>2<", b"<inputId>3<"),
                ("input's type", b"<type>0</type>", b"<type>3</type>"),
                ("input without type", b"<type>0</type>", b""),
                ("entry of another name", b"<language>spa<", b"<tongue/><language>spa<"),
                ("text in a list", b"<modules>", b"<modules>here"),
                ("band", b"<band>low</band>\n\t\t</diseqc>", b"<band>C</band>\n\t\t</diseqc>"),
                ("PLSmode's letter case", b"<PLSmode>auto<", b"<PLSmode>Auto<"),
                ("guard interval", b"<guardInterval>", b"<guardInterval>0"),
                ("scrambling without name", b"<name>VSecure</name>", b""),
                ("NIT pattern's type", b"<tipoNITPatron>", b"<tipoNITPatron>9"),
                ("maintenance without hour", b"<hour>4</hour>", b""),
            ]
        )
        self.assertEqual([], [case[0] for case in found if case[2] == 0 or not case[3]])


if __name__ == "__main__":
    unittest.main()

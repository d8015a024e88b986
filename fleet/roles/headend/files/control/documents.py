"""Documents: whether one is whole, and what is different between two, in words."""

from __future__ import annotations

import json
import os
import resource
import shutil
import subprocess
import tempfile
from collections import Counter
from dataclasses import dataclass
from pathlib import Path
from xml.parsers import expat

from words import Failure, clean, last_line, plural

DEEPEST = 64
ROOTS = ("configuration", "backup")
_READABLE = bytes(c if c >= 32 or c in b"\t\n\r" else ord("?") for c in range(256))
# What tarvo-backup may take for a document that a device sent.
MOST_MEMORY = 2 << 30
MOST_SECONDS = 30
MOST_OUTPUT = 64 << 20


def prove_whole(document: bytes) -> None:
    """Fails unless the document is well-formed to its end and holds a configuration with modules."""
    elements: list[str] = []
    has_module = False

    def start(name: str, _: object) -> None:
        if not elements and name not in ROOTS:
            raise Failure(f"what it sends is no configuration: it begins with <{name}>")
        nonlocal has_module
        elements.append(name)
        has_module = has_module or name == "module"
        if len(elements) > DEEPEST:
            raise Failure(f"what it sends is no configuration: it is {DEEPEST} elements deep")

    def doctype(*_: object) -> None:
        raise Failure("what it sends is no configuration: it declares a document type")

    # A headend's texts may hold bytes that no encoding has; it is the structure that is proved here.
    try:
        document.decode("utf-8")
        encoding = "utf-8"
    except UnicodeDecodeError:
        encoding = "iso-8859-1"
    parser = expat.ParserCreate(encoding, None, None)  # which keeps no name
    parser.StartElementHandler = start
    parser.EndElementHandler = lambda _: elements.pop()
    parser.StartDoctypeDeclHandler = doctype
    try:
        parser.Parse(document.translate(_READABLE), True)
    except expat.ExpatError as error:
        raise Failure(f"the document is not whole: {error}", again=True) from None
    if not has_module:
        raise Failure("the document is empty: there is no module in it", again=True)


@dataclass(frozen=True)
class Change:
    """A setting that is otherwise in one document than in another."""

    path: str
    new: str | None
    line: str  # for people, secrets masked

    def is_like(self, other: Change) -> bool:
        """Whether both say the same. Of two new entries that has been seen when both are there: a
        restore does not bring back every item of one."""
        if self.new is None or other.new is None:
            return self.new is other.new
        return self.new == other.new or (self.new[:1] == "<" and other.new[:1] == "<")


def lines_of(changes: list[Change]) -> list[str]:
    return [change.line for change in changes]


class Tool:
    """tarvo-backup on this machine, in a private folder that lasts as long as this object is used."""

    def __init__(self, program: str) -> None:
        # The package puts it into /usr/sbin, which the PATH of a plain user and that of cron leave out.
        folders = os.environ.get("PATH", os.defpath) + ":/usr/local/sbin:/usr/sbin"
        self._program = shutil.which(program, path=folders) or program
        self._folder = tempfile.TemporaryDirectory(prefix="tarvo-fleet-")
        self._files = 0

    def __enter__(self) -> Tool:
        return self

    def __exit__(self, *_: object) -> None:
        self._folder.cleanup()

    def faults(self, document: bytes) -> list[str]:
        """What is wrong with a document, a line each; an import would refuse it."""
        status, output = self._run("check", "--json", self._file(document), good=(0, 2))
        if status == 0:
            return []
        found = [fault for fault in json.loads(output) if fault["severity"] == "error"]
        return [f"{fault['path']}: {fault['message']}".removeprefix(": ") for fault in found]

    def prove_readable(self, document: bytes) -> None:
        """Fails when no later comparison or restore could read the document."""
        self._run("show", self._file(document), good=(0,))

    def can_read(self, document: bytes) -> bool:
        try:
            self.prove_readable(document)
        except Failure:
            return False
        return True

    def changes(self, old: bytes, new: bytes) -> list[Change]:
        """What is different in the settings; empty when nothing is."""
        if old == new:
            return []
        files = [self._file(old), self._file(new)]
        status, output = self._run("diff", "--json", *files, good=(0, 1))
        if status == 0:
            return []
        redacted = [self._file(self._run("show", "--redact", f, good=(0,))[1]) for f in files]
        _, open_output = self._run("diff", "--json", *redacted, good=(0, 1))
        shown = {change["path"]: change for change in json.loads(open_output)}
        return [
            Change(
                change["path"],
                change["new"],
                _line(shown.get(change["path"], {**change, "old": None, "new": None})),
            )
            for change in json.loads(output)
        ]

    def _file(self, document: bytes) -> str:
        self._files += 1
        path = Path(self._folder.name) / f"{self._files}.xml"
        path.write_bytes(document)
        return str(path)

    def _run(self, *arguments: str, good: tuple[int, ...]) -> tuple[int, bytes]:
        def limit() -> None:
            resource.setrlimit(resource.RLIMIT_AS, (MOST_MEMORY, MOST_MEMORY))
            resource.setrlimit(resource.RLIMIT_CPU, (MOST_SECONDS, MOST_SECONDS))
            resource.setrlimit(resource.RLIMIT_FSIZE, (MOST_OUTPUT, MOST_OUTPUT))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        try:
            # Of files alone the size can be limited.
            with tempfile.TemporaryFile(dir=self._folder.name) as file:
                result = subprocess.run(
                    [self._program, *arguments],
                    stdin=subprocess.DEVNULL,
                    stdout=file,
                    stderr=subprocess.PIPE,
                    preexec_fn=limit,
                    timeout=4 * MOST_SECONDS,
                    check=False,
                )
                file.seek(0)
                output = file.read()
        except FileNotFoundError:
            raise Failure(
                f"on this machine: there is no {self._program}; install the package tarvo-backup,"
                " or set headend_tool to where it is"
            ) from None
        except subprocess.TimeoutExpired:
            raise Failure(f"tarvo-backup {arguments[0]} takes too long over its document") from None
        if result.returncode < 0:
            raise Failure(f"tarvo-backup {arguments[0]} was ended over its document, which takes too much of it")
        if result.returncode not in good:
            said = last_line(result.stderr) or f"status {result.returncode}"
            raise Failure(f"tarvo-backup {arguments[0]} cannot read its document: {said}")
        return result.returncode, output


def _line(change: dict) -> str:
    path, old, new = clean(change["path"]), change["old"], change["new"]
    if old is None and new is None:
        return f"{path}: changed (secret)"
    if old is None:
        return f"{path}: added" + ("" if new.startswith("<") else f", {clean(new, 120)}")
    if new is None:
        return f"{path}: removed" + ("" if old.startswith("<") else f", was {clean(old, 120)}")
    return f"{path}: {clean(old, 120) or 'nothing'} -> {clean(new, 120) or 'nothing'}"


def summary(changes: list[Change]) -> str:
    """'3 changes in modules (2), network': for a line's worth of attention."""
    parts = Counter(change.path.split("/")[0].split("[")[0] for change in changes)
    names = [name + (f" ({count})" if count > 1 and len(parts) > 1 else "") for name, count in parts.items()]
    return f"{plural(len(changes), 'change')} in {', '.join(names)}"

"""The Debian packages of this machine's architecture: what they hold, how they were built, and that
they are the same wherever they are built."""

from __future__ import annotations

import functools
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "sim"))

from device import Device  # noqa: E402

PROGRAM = "usr/bin/tarvo-config"
# Bytes of the program and its library as they are installed.
SIZE_LIMIT = 300_000

# The tests of the tree have run already.
ENVIRONMENT = {**os.environ, "DEB_BUILD_OPTIONS": "nocheck"}

_folders = tempfile.TemporaryDirectory(prefix="packages-")


def output_of(*command: str | os.PathLike[str]) -> str:
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


@functools.cache
def built(name: str) -> Path:
    """A folder with the packages of one build; every build is in a folder of its own."""
    folder = Path(_folders.name) / name
    command = [REPOSITORY / "scripts/package", output_of("dpkg", "--print-architecture").strip()]
    subprocess.run([*command, folder], check=True, env=ENVIRONMENT)
    return folder


def package(name: str) -> Path:
    (found,) = built("first").glob(f"{name}_*.deb")
    return found


@functools.cache
def unpacked(name: str) -> Path:
    folder = Path(_folders.name) / f"{name}.unpacked"
    subprocess.run(["dpkg-deb", "-x", package(name), folder], check=True)
    return folder


def files_of(name: str) -> set[str]:
    root = unpacked(name)
    return {str(p.relative_to(root)) for p in root.rglob("*") if not p.is_dir()}


class PackageTest(unittest.TestCase):
    def test_are_the_same_when_built_in_another_folder(self) -> None:
        first = sorted(built("first").glob("*.deb"))
        self.assertEqual(5, len(first), "three packages, and the symbols of two programs")
        for one in first:
            with self.subTest(one.name):
                self.assertEqual(one.read_bytes(), (built("second") / one.name).read_bytes())

    def test_lintian_finds_nothing(self) -> None:
        (changes,) = built("first").glob("*.changes")
        result = subprocess.run(
            ["lintian", "--allow-root", "--fail-on=error,warning", changes],
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
        )
        self.assertEqual((0, ""), (result.returncode, result.stdout))

    def test_program_package_holds_program_library_manuals_and_schemas(self) -> None:
        files = {re.sub(r"^usr/lib/[^/]+/", "usr/lib/*/", name) for name in files_of("tarvo-config")}
        self.assertEqual(
            {
                PROGRAM,
                "usr/lib/*/tarvo-config/libtarvocommon.so",
                "usr/share/doc/tarvo-config/changelog.gz",
                "usr/share/doc/tarvo-config/copyright",
                "usr/share/man/man5/tarvo-config-document.5.gz",
                "usr/share/man/man8/tarvo-config.8.gz",
            }
            | {f"usr/share/tarvo-config/{path.name}" for path in (REPOSITORY / "schema").iterdir()},
            files,
        )

    def test_companion_package_holds_program_manual_and_completion(self) -> None:
        self.assertEqual(
            {
                "usr/sbin/tarvo-backup",
                "usr/share/bash-completion/completions/tarvo-backup",
                "usr/share/doc/tarvo-backup/changelog.gz",
                "usr/share/doc/tarvo-backup/copyright",
                "usr/share/man/man8/tarvo-backup.8.gz",
            },
            files_of("tarvo-backup"),
        )

    def test_doc_package_holds_the_documents(self) -> None:
        documents = {path.name for path in (REPOSITORY / "docs").glob("*.md")}
        files = {Path(name).name.removesuffix(".gz") for name in files_of("tarvo-config-doc")}
        self.assertEqual(documents | {"README.md", "changelog", "copyright"}, files)

    def test_depends_on_the_libraries_that_it_is_linked_with(self) -> None:
        depends = output_of("dpkg-deb", "-f", package("tarvo-config"), "Depends")
        names = {entry.split()[0] for entry in depends.split(",")}
        self.assertEqual({"libc6", "libgcc-s1", "libsqlite3-0", "libstdc++6"}, names)

    def test_unpacked_program_runs(self) -> None:
        with tempfile.TemporaryDirectory(prefix="device-") as folder:
            device = Device.create("QRA-310", folder)
            result = device.run(unpacked("tarvo-config") / PROGRAM)
        golden = (REPOSITORY / "tests/e2e/golden/QRA-310.xml").read_bytes()
        self.assertEqual((0, golden + b"\n", b""), (result.status, result.stdout, result.stderr))

    def test_program_is_hardened(self) -> None:
        program = unpacked("tarvo-config") / PROGRAM
        self.assertRegex(output_of("readelf", "-hW", program), r"Type: +DYN \(Position-Independent")
        self.assertIn("GNU_RELRO", output_of("readelf", "-lW", program))
        dynamic = output_of("readelf", "-dW", program)
        self.assertRegex(dynamic, r"\(FLAGS\) +BIND_NOW")
        self.assertRegex(dynamic, r"\(FLAGS_1\) +Flags: NOW PIE")
        symbols = output_of("readelf", "--dyn-syms", "-W", program)
        self.assertIn(" __stack_chk_fail@", symbols)
        for fortified in ("__snprintf_chk", "__syslog_chk"):
            self.assertTrue(f" {fortified}@" in symbols, fortified)

    def test_program_and_library_stay_small(self) -> None:
        root = unpacked("tarvo-config")
        installed = [root / PROGRAM, *root.glob("usr/lib/*/tarvo-config/*.so")]
        self.assertLessEqual(sum(path.stat().st_size for path in installed), SIZE_LIMIT)


if __name__ == "__main__":
    unittest.main()

"""The Debian packages: what they hold, how they were built, and that they are the same wherever they
are built.

They are built for this machine, twice. With TARVO_PACKAGES=FOLDER they are those of two builds that
are there, FOLDER/first and FOLDER/second, for another machine perhaps: PackageTest is about any
machine's."""

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
COMPANION = "usr/sbin/tarvo-backup"
UNITS = REPOSITORY / "dist/systemd"
# Calls that the C library checks, of each binary.
FORTIFIED = {
    "tarvo-config": ("__syslog_chk",),
    "tarvo-backup": ("__snprintf_chk", "__syslog_chk"),
    "libtarvocommon.so": (),
}
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
    if "TARVO_PACKAGES" in os.environ:
        return Path(os.environ["TARVO_PACKAGES"]) / name
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


def binaries_of(name: str) -> list[Path]:
    files = (unpacked(name) / file for file in files_of(name))
    return sorted(path for path in files if path.read_bytes()[:4] == b"\x7fELF")


class PackageTest(unittest.TestCase):
    def test_are_the_same_when_built_in_another_folder(self) -> None:
        first = sorted(built("first").glob("*.deb"))
        names = {one.name.split("_")[0] for one in first} - {"tarvo-config-doc"}
        programs = {"tarvo-config", "tarvo-backup"}
        self.assertEqual(programs | {f"{name}-dbgsym" for name in programs}, names)
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
                COMPANION,
                "etc/cron.d/tarvo-backup",
                "etc/init.d/tarvo-backup-undo",
                *(f"lib/systemd/system/{path.name}" for path in UNITS.iterdir()),
                "usr/share/bash-completion/completions/tarvo-backup",
                "usr/share/doc/tarvo-backup/changelog.gz",
                "usr/share/doc/tarvo-backup/copyright",
                "usr/share/lintian/overrides/tarvo-backup",
                "usr/share/man/man8/tarvo-backup.8.gz",
            },
            files_of("tarvo-backup"),
        )

    def test_depends_on_the_libraries_that_it_is_linked_with(self) -> None:
        depends = output_of("dpkg-deb", "-f", package("tarvo-config"), "Depends")
        names = {entry.split()[0] for entry in depends.split(",")}
        self.assertEqual({"libc6", "libgcc-s1", "libsqlite3-0", "libstdc++6"}, names)

    def test_programs_and_library_are_hardened(self) -> None:
        library = "libtarvocommon.so"
        checked = set()
        for path in (f for name in ("tarvo-config", "tarvo-backup") for f in binaries_of(name)):
            with self.subTest(path.name):
                checked.add(path.name)
                self.assertRegex(output_of("readelf", "-hW", path), r"Type: +DYN ")
                segments = output_of("readelf", "-lW", path)
                self.assertIn("GNU_RELRO", segments)
                self.assertRegex(segments, r"GNU_STACK .* RW +0x")
                dynamic = output_of("readelf", "-dW", path)
                self.assertNotIn("TEXTREL", dynamic)
                self.assertRegex(dynamic, r"\(FLAGS\) +BIND_NOW")
                executable = "" if path.name == library else " PIE"
                self.assertRegex(dynamic, rf"\(FLAGS_1\) +Flags: NOW{executable}\n")
                symbols = output_of("readelf", "--dyn-syms", "-W", path)
                for symbol in ("__stack_chk_fail", *FORTIFIED[path.name]):
                    self.assertTrue(f" {symbol}@" in symbols, symbol)
        self.assertEqual(set(FORTIFIED), checked)

    def test_program_and_library_stay_small(self) -> None:
        root = unpacked("tarvo-config")
        installed = [root / PROGRAM, *root.glob("usr/lib/*/tarvo-config/*.so")]
        self.assertLessEqual(sum(path.stat().st_size for path in installed), SIZE_LIMIT)


class HostPackageTest(unittest.TestCase):
    def test_doc_package_holds_the_documents(self) -> None:
        documents = {path.name for path in (REPOSITORY / "docs").glob("*.md")}
        files = {Path(name).name.removesuffix(".gz") for name in files_of("tarvo-config-doc")}
        self.assertEqual(documents | {"README.md", "changelog", "copyright"}, files)

    def test_unpacked_program_runs(self) -> None:
        with tempfile.TemporaryDirectory(prefix="device-") as folder:
            device = Device.create("QRA-310", folder)
            result = device.run(unpacked("tarvo-config") / PROGRAM)
        golden = (REPOSITORY / "tests/e2e/golden/QRA-310.xml").read_bytes()
        self.assertEqual((0, golden + b"\n", b""), (result.status, result.stdout, result.stderr))


if __name__ == "__main__":
    unittest.main()

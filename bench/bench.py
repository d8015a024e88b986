#!/usr/bin/env python3
"""Measures the program against the floor: the same statements, scripts, log lines and output,
replayed by bench/floor.c through SQLite's own C interface.

    scripts/bench                      CPU, wall and memory of devices a, b and c
    scripts/bench --instructions a b   with the instructions that valgrind counts
    scripts/bench --growth             what our own part takes as a headend grows
    scripts/bench --dump               beside it, sqlite3's .dump and restore of the same files
"""

from __future__ import annotations

import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path

from shapes import DEVICES, GROWTH, SIZES, Shape, create
from device import DATABASES, Device

REPOSITORY = Path(__file__).resolve().parents[1]
PROGRAM = Path(os.environ.get("TARVO_CONFIG", REPOSITORY / "build/release/bin/tarvo-config"))
TOOLS = REPOSITORY / "build/bench"

# Inside the device. All that is measured lies here, the program's library beside it.
PLACE = "/tarvo/bench"
DOCUMENT = "/tmp/document.xml"
OUTPUT_FILE = "/tmp/ConfigurationXML.xml"


@dataclass(frozen=True)
class Taken:
    cpu: float
    wall: float
    memory_mb: float


def build_tools() -> None:
    TOOLS.mkdir(parents=True, exist_ok=True)
    compile_ = ["cc", "-std=c17", "-O2", "-Wall", "-Wextra"]
    bench = REPOSITORY / "bench"
    trace = REPOSITORY / "tests/compare/trace.c"
    for command in (
        [*compile_, "-o", TOOLS / "meter", bench / "meter.c"],
        [*compile_, "-o", TOOLS / "floor", bench / "floor.c", "-lsqlite3"],
        [*compile_, "-shared", "-fPIC", "-o", TOOLS / "trace.so", trace, "-lsqlite3"],
    ):
        subprocess.run(command, check=True)


class Bench:
    """One device with the program and the floor in it."""

    def __init__(self, folder: Path, shape: Shape | None) -> None:
        self.device = create(folder, shape)
        place = self.device.path(PLACE)
        for name in ("bin", "lib"):
            (place / name).mkdir(parents=True)
        for file in (PROGRAM, TOOLS / "meter", TOOLS / "floor"):
            shutil.copy(file, place / "bin")
        for file in (*PROGRAM.parents[1].glob("lib/libtarvocommon.so"), TOOLS / "trace.so"):
            shutil.copy(file, place / "lib")
        self.program = [f"{PLACE}/bin/tarvo-config"]

    def run(self, command: Sequence[str], env: dict[str, str] | None = None) -> bytes:
        result = self.device.run(command[0], command[1:], env=env)
        if result.status != 0:
            raise SystemExit(f"{command} ended with {result.status}: {result.stderr.decode()}")
        return result.stdout

    def prepare(self) -> None:
        """Makes the document, and imports it once: a first import may settle marks in the rows."""
        self.run(self.program)
        shutil.copy(self.device.path(OUTPUT_FILE), self.device.path(DOCUMENT))
        self.run([*self.program, DOCUMENT])

    def commands(self, mode: str) -> tuple[list[str], list[str]]:
        """What runs the program in that mode, and what replays such a run."""
        command = self.program if mode == "export" else [*self.program, DOCUMENT]
        record = f"{PLACE}/{mode}"
        self.device.path(record).mkdir()
        self.run(command, {"LD_PRELOAD": f"{PLACE}/lib/trace.so", "TRACE_FOLDER": record})
        floor = [f"{PLACE}/bin/floor", f"{record}/trace", f"{record}/stdout"]
        return command, floor if mode == "import" else [*floor, OUTPUT_FILE]

    def measure(self, command: Sequence[str]) -> Taken:
        meter = [f"{PLACE}/bin/meter", f"{PLACE}/taken", *command]
        self.run(meter)
        cpu, wall, memory, status = self.device.path(f"{PLACE}/taken").read_text().split()[-4:]
        if status != "0":
            raise SystemExit(f"{command} ended with {status}")
        return Taken(float(cpu), float(wall), int(memory) / 1024)

    def instructions(self, command: Sequence[str], *options: str) -> int:
        """As valgrind counts them, in millions; of the process alone, without its scripts."""
        log = f"{PLACE}/valgrind"
        options = (f"--log-file={log}", "--callgrind-out-file=/dev/null", *options)
        self.run(["/usr/bin/valgrind", "--tool=callgrind", *options, *command])
        found = re.search(r"Collected : (\d+)", self.device.path(log).read_text())
        return int(found[1])

    def own_instructions(self, command: Sequence[str]) -> int:
        """Without what SQLite does to run our statements."""
        return self.instructions(
            command, "--toggle-collect=sqlite3_exec", "--collect-atstart=yes"
        )


def medians(bench: Bench, commands: Sequence[Sequence[str]], rounds: int) -> list[Taken]:
    taken: list[list[Taken]] = [[] for _ in commands]
    for _ in range(rounds):
        for command, results in zip(commands, taken):
            results.append(bench.measure(command))
    return [
        Taken(
            statistics.median(each.cpu for each in results),
            statistics.median(each.wall for each in results),
            statistics.median(each.memory_mb for each in results),
        )
        for results in taken
    ]


def rounds_for(bench: Bench, command: Sequence[str]) -> int:
    """Many of the short runs, few of the long ones."""
    return max(5, min(101, int(10 / bench.measure(command).cpu))) | 1


def compare_devices(names: Sequence[str], with_instructions: bool, rounds: int) -> None:
    print("| device | mode | CPU ms, program / floor | ratio | wall ratio | peak MB, program / floor |"
          " document MB | instructions, ratio |")
    print("|---|---|---|---|---|---|---|---|")
    for name in names:
        with tempfile.TemporaryDirectory() as folder:
            bench = Bench(Path(folder) / "device", DEVICES[name])
            bench.prepare()
            for mode in ("export", "import"):
                commands = bench.commands(mode)
                count = rounds or rounds_for(bench, commands[1])
                ours, floor = medians(bench, commands, count)
                size = bench.device.path(DOCUMENT).stat().st_size / 1e6
                counted = "-"
                if with_instructions:
                    own, floors = (bench.instructions(command) for command in commands)
                    counted = f"{own / 1e6:.1f} / {floors / 1e6:.1f} M, {own / floors:.3f}"
                print(
                    f"| {name} | {mode} | {ours.cpu * 1e3:.1f} / {floor.cpu * 1e3:.1f}"
                    f" | {ours.cpu / floor.cpu:.3f} | {ours.wall / floor.wall:.3f}"
                    f" | {ours.memory_mb:.1f} / {floor.memory_mb:.1f} | {size:.2f} | {counted} |",
                    flush=True,
                )


def growth(names: Sequence[str]) -> None:
    print("| growing | mode | size | document kB | own instructions, M | times |")
    print("|---|---|---|---|---|---|")
    for name in names:
        for mode in ("export", "import"):
            before = None
            for size in SIZES:
                with tempfile.TemporaryDirectory() as folder:
                    bench = Bench(Path(folder) / "device", GROWTH[name](size))
                    bench.prepare()
                    command = [*bench.program, *([DOCUMENT] if mode == "import" else [])]
                    own = bench.own_instructions(command)
                    kilobytes = bench.device.path(DOCUMENT).stat().st_size / 1e3
                times = "" if before is None else f"{own / before:.2f}"
                print(f"| {name} | {mode} | {size} | {kilobytes:.0f} | {own / 1e6:.1f} | {times} |",
                      flush=True)
                before = own


def dump_and_restore(names: Sequence[str]) -> None:
    """sqlite3 reads the files that an export reads, and makes anew the one that an import writes."""
    print("| device | export CPU ms | .dump CPU ms | import CPU ms | restore CPU ms |")
    print("|---|---|---|---|---|")
    configuration, state = DATABASES["config_global"], DATABASES["temp_global"]
    for name in names:
        with tempfile.TemporaryDirectory() as folder:
            bench = Bench(Path(folder) / "device", DEVICES[name])
            bench.prepare()
            shell = ["/bin/sh", "-c"]
            dump = [*shell, f"sqlite3 {configuration} .dump >/tmp/1 && sqlite3 {state} .dump >/tmp/2"]
            restore = [*shell, "rm -f /tmp/restored; sqlite3 /tmp/restored </tmp/1"]
            commands = (bench.program, dump, [*bench.program, DOCUMENT], restore)
            taken = medians(bench, commands, rounds_for(bench, bench.program))
            print(f"| {name} | " + " | ".join(f"{each.cpu * 1e3:.1f}" for each in taken) + " |",
                  flush=True)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("names", nargs="*", help="devices, or ways of growing; all unless given")
    parser.add_argument("--instructions", action="store_true", help="count instructions too")
    parser.add_argument("--growth", action="store_true", help="how our own part grows")
    parser.add_argument("--dump", action="store_true", help="sqlite3's .dump and restore")
    parser.add_argument("--rounds", type=int, default=0, help="runs of each; else by their length")
    options = parser.parse_args()
    build_tools()
    if options.growth:
        growth(options.names or list(GROWTH))
    elif options.dump:
        dump_and_restore(options.names or list(DEVICES))
    else:
        compare_devices(options.names or list(DEVICES), options.instructions, options.rounds)


if __name__ == "__main__":
    main()

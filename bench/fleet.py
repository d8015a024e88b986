"""What a night costs: simulated headends behind sshd on loopback."""

import argparse
import resource
import statistics
import sys
import time
from collections.abc import Callable
from contextlib import closing
from pathlib import Path

HERE = Path(__file__).resolve()
sys.path.insert(0, str(HERE.parents[1] / "tests/fleet"))
sys.path.insert(0, str(HERE.parents[1] / "fleet/roles/headend/files/control"))

from documents import Tool, prove_whole
from fleet_sim import BACKUP, Headends
from repository import Repository
from session import ask

CONFIG_DB = "/tarvo/DB/config_global.sqlite"
FORKS = 10
NIGHTS = ("first", "unchanged", "all changed")


def used() -> float:
    """CPU seconds of this process and of what it has started and seen the end of."""
    parts = (resource.getrusage(who) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))
    return sum(part.ru_utime + part.ru_stime for part in parts)


def rename(headends: Headends, name: str) -> None:
    for device in headends.devices.values():
        with closing(device.database(CONFIG_DB)) as database:
            database.execute(
                "UPDATE configuracionWebGlobal SET valor = ? WHERE nombre = 'identificacion_cabecera'",
                (name,),
            )


def nights(number: int, count: int) -> None:
    with Headends() as headends:
        for index in range(number):
            headends.add(f"host{index}", "QRA-310")
        headends.start()
        for night in NIGHTS[:count]:
            if night == "all changed":
                rename(headends, "Villa Aurora")
            cpu, wall = used(), time.monotonic()
            run = headends.play("backup", ANSIBLE_FORKS=str(FORKS))
            cpu, wall = used() - cpu, time.monotonic() - wall
            if run.status:
                sys.exit(run.output)
            print(
                f"| {number} | {night} | {cpu:.1f} | {wall:.1f} | {cpu / number * 1000:.0f}"
                f" | {wall / number * 1000:.0f} |",
                flush=True,
            )


def steps() -> None:
    with Headends() as headends:
        device = headends.add("host", "QRA-310")
        headends.start()
        options = f"-F none -o UserKnownHostsFile={headends.folder}/known_hosts"
        job = {
            "connect_timeout": 15, "silence": 60, "ssh_args": options, "key": str(headends.folder / "key"),
            "port": headends.port, "user": "root", "address": "127.0.1.1",
            "repository": str(headends.repository), "author": "bench <bench@localhost>",
        }
        repository = Repository(job)
        repository.make()
        answer = ask(job, "backup.sh", "", limit=1 << 25, seconds=60)
        document = answer.body
        other = document.replace(b"Mirador", b"Atlantic")
        number = iter(range(1000))
        with Tool(str(BACKUP)) as tool:
            cases: dict[str, Callable[[], object]] = {
                "ssh session, script, tarvo-backup save": lambda: ask(
                    job, "backup.sh", "", limit=1 << 25, seconds=60
                ),
                "proof that the document is whole": lambda: prove_whole(document),
                "tarvo-backup check": lambda: tool.faults(document),
                "comparison, nothing changed": lambda: tool.changes(document, document),
                "comparison, a change": lambda: tool.changes(document, other),
                "commit": lambda: repository.keep("host", document + b" " * next(number), ["x"]),
            }
            for name, call in cases.items():
                cpu, wall = [], []
                for _ in range(11):
                    start, clock = used(), time.monotonic()
                    call()
                    cpu.append(used() - start)
                    wall.append(time.monotonic() - clock)
                middle = [statistics.median(values) * 1000 for values in (cpu, wall)]
                print(f"| {name} | {middle[0]:.0f} | {middle[1]:.0f} |", flush=True)
        del device


def main() -> None:
    parser = argparse.ArgumentParser(prog="scripts/bench fleet", description=__doc__)
    parser.add_argument(
        "numbers", nargs="*", type=int, default=[10, 50], metavar="NUMBER", help="how many headends"
    )
    parser.add_argument(
        "--nights", type=int, default=len(NIGHTS), help="how many of the three: " + ", ".join(NIGHTS)
    )
    arguments = parser.parse_args()
    print("| step | CPU ms of this machine | wall ms |\n|---|---|---|")
    steps()
    print("\n| headends | night | CPU s | wall s | CPU ms a headend | wall ms a headend |")
    print("|---|---|---|---|---|---|")
    for number in arguments.numbers:
        nights(number, arguments.nights)


if __name__ == "__main__":
    main()

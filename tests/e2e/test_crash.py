"""The program is killed in the middle of an import: the database is then wholly old or new."""

import fcntl
import os
import random
import sys
import tempfile
import termios
import time
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    CONFIG_DB,
    DATABASES,
    DOCUMENT_FILE,
    PROGRAM,
    Device,
    EndToEndTest,
    Running,
    edited,
    golden,
    main,
    tables,
)

KILLED = 128 + 9
PIPE_SIZE = 4096


def changed_document() -> bytes:
    """The sample's document with a change in every section that holds any."""
    text = golden("QRA-310")
    for old, new in (
        ("<location>Málaga", "<location>M\u00e1laga centro"),
        ("<timezone>Europe/Madrid<", "<timezone>Europe/Paris<"),
        ("<maturityRating>16<", "<maturityRating>12<"),
        ("<min>30<", "<min>31<"),
        (
            "<frequency>11317</frequency>\n\t\t\t<orbit>",
            "<frequency>11318</frequency>\n\t\t\t<orbit>",
        ),
        ("<provider>Ilhas<", "<provider>Ilha<"),
        ("<ip>192.168.10.21<", "<ip>192.168.10.22<"),
        ("<cellID>17<", "<cellID>18<"),
        ("<oscBandaCFreq>5150<", "<oscBandaCFreq>5151<"),
        ("<position>4<", "<position>5<"),
        ("<date>2024-02-29 03:00:00<", "<date>2024-03-01 03:00:00<"),
        ("<language>deu<", "<language>fra<"),
        ("<attenuation>12<", "<attenuation>11<"),
        ("<frequency>402000<", "<frequency>410000<"),
        ("<frequency>474000<", "<frequency>522000<"),
        ("<inputName>Soft Radio<", "<inputName>Loud Radio<"),
    ):
        text = edited(text, old, new)
    return text


# A section that prints much and changes nothing. Nobody reads what is printed, so that the program
# comes to a stop in it.
CHATTER = b"<lnb>" + b"<oscLowFreq>9750</oscLowFreq>" * 1000 + b"</lnb>"

SECTIONS = (
    *("identification", "regional", "maturityRating", "maintenances", "homeChannels"),
    *("serviceEPGs", "network", "dvbNetworks", "lnb", "diseqcs", "scramblings"),
    *("preferredLanguages", "modules"),
)


class CrashTest(EndToEndTest):
    def start(self, device: Device, text: bytes) -> Running:
        device.path(DOCUMENT_FILE).write_bytes(text)
        return device.start(PROGRAM, [DOCUMENT_FILE], env={"TZ": "UTC"}, pipe_size=PIPE_SIZE)

    def wait_until_blocked(self, running: Running) -> None:
        """Returns when something was printed, and then nothing for a while."""
        since, before = time.monotonic(), b""
        deadline = since + 60
        while time.monotonic() < deadline:
            waiting = fcntl.ioctl(running.process.stdout, termios.FIONREAD, b"\0" * 4)
            if waiting != before:
                since, before = time.monotonic(), waiting
            elif any(waiting) and time.monotonic() > since + 0.4:
                self.assertIsNone(running.process.poll())
                return
            time.sleep(0.01)
        self.fail("the program has not come to a stop")

    def killed(self, running: Running) -> None:
        running.kill()
        self.assertEqual(KILLED, running.wait(60).status)

    def imported(self, device: Device) -> dict[str, dict[str, list[tuple]]]:
        """The device's tables after an import that nobody disturbs."""
        result = self.load(device, changed_document())
        self.assertEqual((0, b""), (result.status, result.stderr))
        return tables(device)

    def assertUsable(self, device: Device) -> None:
        """The next import does what the one that was killed was meant to do."""
        self.assertTables(self.imported(self.device("QRA-310")), self.imported(device))

    def stopped_after(self, section: str) -> None:
        text = changed_document()
        end = text.index(f"</{section}>\n".encode(), text.index(b"\n\t<" + section.encode()))
        end += len(f"</{section}>\n")
        device = self.device("QRA-310")
        before = tables(device)
        running = self.start(device, text[:end] + CHATTER + text[end:])
        self.wait_until_blocked(running)
        self.killed(running)
        self.assertTables(before, tables(device))
        self.assertRun(self.export(device), stdout=golden("QRA-310") + b"\n", syslog=[])
        self.assertUsable(device)

    def test_killed_between_two_sections(self) -> None:
        self.each(self.stopped_after, [(section,) for section in SECTIONS])

    def test_killed_after_changes_have_reached_the_file(self) -> None:
        # A cache of a few pages spills into the file long before the commit.
        device = self.device("QRA-310")
        with closing(device.database(CONFIG_DB)) as database:
            database.execute("PRAGMA default_cache_size = 2")
        before = tables(device)
        content = device.path(CONFIG_DB).read_bytes()
        text = edited(changed_document(), "</configuration>", CHATTER.decode() + "</configuration>")
        running = self.start(device, text)
        self.wait_until_blocked(running)
        self.killed(running)
        self.assertNotEqual(content, device.path(CONFIG_DB).read_bytes())
        self.assertTrue(device.path(CONFIG_DB + "-journal").exists())
        # The next program to open the file undoes them.
        self.assertRun(self.export(device), stdout=golden("QRA-310") + b"\n", syslog=[])
        self.assertTables(before, tables(device))
        self.assertUsable(device)

    def test_killed_while_it_waits_to_write(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN IMMEDIATE")
            running = self.start(device, changed_document())
            running.process.stderr.readline()
            self.killed(running)
        self.assertTables(before, tables(device))
        self.assertUsable(device)

    def test_killed_while_it_waits_to_commit(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN")
            other.execute("SELECT count(*) FROM RedesModulos").fetchall()
            running = self.start(
                device, b"<configuration><network><ip>1</ip></network></configuration>"
            )
            deadline = time.monotonic() + 60
            while not device.path(CONFIG_DB + "-journal").exists():
                self.assertLess(time.monotonic(), deadline)
                time.sleep(0.01)
            time.sleep(0.3)
            self.killed(running)
        self.assertTables(before, tables(device))
        self.assertUsable(device)

    def test_killed_in_an_action_after_the_commit(self) -> None:
        device = self.device("QRA-310")
        script = device.path("/tarvo/script/WAN_from_DB.sh")
        script.write_text(
            "#!/bin/sh\n: >/tmp/started\nwhile [ -e /tmp/started ]; do sleep 0.05; done\n"
        )
        address = b"<configuration><network><ip>1.2.3.4</ip></network></configuration>"
        running = self.start(device, address)
        deadline = time.monotonic() + 60
        while not device.path("/tmp/started").exists():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)
        running.kill()
        script.write_text("#!/bin/sh\n")
        device.path("/tmp/started").unlink()
        self.assertEqual(KILLED, running.wait(60).status)
        self.assertEqual(
            [("1.2.3.4",)],
            self.query(
                device, "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'network_IP'"
            ),
        )
        self.assertUsable(device)

    def assertWhole(self, device: Device) -> None:
        for path in DATABASES.values():
            self.assertEqual([("ok",)], self.query(device, "PRAGMA integrity_check", path), path)

    def killed_at(self, printed: int, seconds: float, before: dict, after: dict) -> int:
        """Kills an import so long after it has printed so much, however slow the machine is.

        Returns the status: the import may just have ended."""
        with tempfile.TemporaryDirectory(prefix="e2e-") as folder:
            device = Device.create("QRA-310", folder)
            running = self.start(device, changed_document())
            running.process.stdout.read(printed)
            time.sleep(seconds)
            running.kill()
            status = running.wait(60).status
            self.assertIn(status, (0, KILLED))
            self.assertWhole(device)
            self.assertIn(tables(device), (before, after))
            self.assertTables(after, self.imported(device))
            return status

    def test_killed_at_any_moment(self) -> None:
        seed = int(os.environ.get("TARVO_SEED") or time.time_ns())
        kills = int(os.environ.get("TARVO_KILLS", "200"))
        device = self.device("QRA-310")
        before = tables(device)
        output = len(self.load(device, changed_document()).stdout)
        after = tables(device)
        moments = random.Random(seed)
        statuses = []
        with self.subTest(seed=seed), ThreadPoolExecutor(2 * (os.cpu_count() or 1)) as pool:
            ends = [
                pool.submit(
                    self.killed_at,
                    moments.randint(0, output),
                    moments.uniform(0, 0.02),
                    before,
                    after,
                )
                for _ in range(kills)
            ]
            statuses = [end.result() for end in ends]
        self.assertGreater(statuses.count(KILLED), kills // 4)


if __name__ == "__main__":
    main()

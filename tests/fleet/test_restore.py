"""playbooks/plan.yml and restore.yml: before or after, never between, and the run tells which."""

import datetime
import re
import sys
import time
import unittest
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import main
from fleet_sim import BACKUP, CONFIG, Device, Headends, Run

CONFIG_DB = "/tarvo/DB/config_global.sqlite"
RUNNING = "/tmp/tarvo-fleet/restore/running"


def name_of(device: Device) -> str:
    with closing(device.database(CONFIG_DB)) as database:
        sql = "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'identificacion_cabecera'"
        return database.execute(sql).fetchone()[0]


def rename(device: Device, name: str) -> None:
    with closing(device.database(CONFIG_DB)) as database:
        sql = "UPDATE configuracionWebGlobal SET valor = ? WHERE nombre = 'identificacion_cabecera'"
        database.execute(sql, (name,))


class RestoreTest(unittest.TestCase):
    maxDiff = 4000

    def setUp(self) -> None:
        self.headends = Headends()
        self.addCleanup(self.headends.close)

    def started(self, **options: bool) -> Device:
        """A headend of which there is a backup."""
        device = self.headends.add("hotel", "LMV-502", **options)
        self.headends.start()
        self.good(self.headends.play("backup"))
        return device

    def good(self, run: Run) -> Run:
        self.assertEqual(0, run.status, run.output)
        return run

    def bad(self, run: Run) -> Run:
        self.assertNotEqual(0, run.status, run.output)
        return run

    def edited(self, old: str, new: str) -> str:
        """A copy of the headend's document, with every `old` replaced."""
        text = (self.headends.repository / "hotel.xml").read_text("utf-8")
        self.assertIn(old, text)
        path = self.headends.folder / "edited.xml"
        path.write_text(text.replace(old, new), "utf-8")
        return str(path)

    def restore(self, **extra: object) -> Run:
        return self.headends.play("restore", extra={"confirmed": True, **extra})

    def subjects(self) -> list[str]:
        return self.headends.git("log", "--reverse", "--format=%s").splitlines()

    def test_a_replaced_device_gets_the_configuration_of_a_date(self) -> None:
        device = self.started()
        rename(device, "Villa Aurora")
        self.good(self.headends.play("backup"))
        today = datetime.date.today().isoformat()
        replaced = self.headends.replace("hotel", "LMV-502")
        self.assertEqual("Hotel Atlântico", name_of(replaced))
        plan = self.good(self.headends.play("plan", extra={"date": today}))
        self.assertIn("identification/headendName: Hotel Atlântico -> Villa Aurora", plan.output)
        self.assertEqual("Hotel Atlântico", name_of(replaced))

        run = self.good(self.restore(date=today))
        self.assertIn("After: the headend is as the document says.", run.output)
        self.assertEqual("Villa Aurora", name_of(replaced))
        # The replacement's own configuration is kept before, the restored one after.
        self.assertEqual(
            [
                "hotel: first backup",
                "hotel: 1 change in identification",
                "hotel: 1 change in identification",
                "hotel: 1 change in identification, after a restore",
            ],
            self.subjects(),
        )
        for commit, name in (("HEAD~1", "Hotel Atlântico"), ("HEAD", "Villa Aurora")):
            self.assertIn(f"<headendName>{name}<", self.headends.git("show", f"{commit}:hotel.xml"))
        folder = replaced.path("/tmp/tarvo-fleet")
        self.assertEqual([], list(folder.iterdir()))

        early = self.bad(self.restore(date="2001-01-01"))
        self.assertIn("the first backup of hotel is of", early.output)
        self.assertIn("is no date", self.bad(self.restore(date="yesterday")).output)
        self.assertIn("say which document", self.bad(self.restore()).output)

    def test_without_yes_and_on_several_hosts_nothing_is_done(self) -> None:
        device = self.started()
        document = self.edited("Hotel Atlântico", "Villa Aurora")
        run = self.bad(self.headends.play("restore", extra={"document": document}))
        self.assertIn("Nothing was done: answer yes", run.output)
        self.headends.variables["other"] = {"ansible_host": "127.0.2.1"}
        run = self.bad(self.restore(document=document))
        self.assertIn("This would restore 2 headends, so nothing was done", run.output)
        self.assertEqual("Hotel Atlântico", name_of(device))

    def named(self, *hosts: str) -> dict[str, Device]:
        """Headends that have another name since their first backup."""
        devices = {host: self.headends.add(host, "LMV-502") for host in hosts}
        self.headends.start()
        self.good(self.headends.play("backup"))
        self.first = self.headends.git("rev-parse", "HEAD").strip()
        for device in devices.values():
            rename(device, "Villa Aurora")
        return devices

    def test_several_are_restored_one_after_the_other_when_told_to(self) -> None:
        devices = self.named("hotel", "inn")
        self.assertIn("would restore 2 headends, so nothing", self.bad(self.restore(commit=self.first)).output)
        self.assertEqual(["Villa Aurora"] * 2, [name_of(device) for device in devices.values()])
        run = self.good(self.restore(commit=self.first, several=True))
        self.assertEqual(2, run.output.count("After: the headend is as the document says."), run.output)
        self.assertEqual(["Hotel Atlântico"] * 2, [name_of(device) for device in devices.values()])

    def test_of_several_none_is_restored_after_one_that_fails(self) -> None:
        devices = self.named("a", "b", "c")
        self.headends.variables["b"]["ansible_host"] = "127.0.2.1"
        run = self.bad(self.restore(commit=self.first, several=True))
        self.assertIn("it does not answer", run.output)
        self.assertEqual(
            ["Hotel Atlântico", "Villa Aurora", "Villa Aurora"], [name_of(device) for device in devices.values()]
        )
        self.assertNotIn("[c]", run.output)

    def test_who_sits_at_the_terminal_is_asked_for_each(self) -> None:
        devices = self.named("hotel", "inn")
        new, old = "Villa Aurora", "Hotel Atlântico"
        for answer, asked, names, status in (("no", ["hotel"], {new}, 2), ("yes", ["hotel", "inn"], {old}, 0)):
            with self.subTest(answer):
                extra = {"commit": self.first, "several": True}
                run = self.headends.play("restore", extra=extra, typed=answer)
                self.assertEqual(status, run.status, run.output)
                self.assertEqual(names, {name_of(device) for device in devices.values()})
                # Who is asked has seen what for.
                plans = re.split(r"Restore this on (\w+)\? yes or no", run.output)
                self.assertEqual(asked, plans[1::2])
                for plan in plans[0:-1:2]:
                    self.assertIn(f"identification/headendName: {new} -> {old}", plan)

    def refusing(self, *, named_meanwhile: str) -> tuple[Device, str]:
        """A headend that refuses a document, while somebody gives it this name."""
        device = self.started(with_backup=False)
        program = device.path("/tarvo/bin/tarvo-config")
        program.rename(program.with_name("real"))
        program.write_text(
            "#!/bin/sh\n"
            "[ $# -gt 0 ] || exec /tarvo/bin/real\n"
            "/tarvo/bin/real /tmp/other.xml\n"
            "exit 1\n"
        )
        program.chmod(0o755)
        other = Path(self.edited("Hotel Atlântico", named_meanwhile))
        device.path("/tmp/other.xml").write_bytes(other.read_bytes())
        return device, self.edited("Hotel Atlântico", "Villa Aurora")

    def test_a_refused_restore_is_not_taken_for_done_when_somebody_changes_the_headend(self) -> None:
        device, document = self.refusing(named_meanwhile="Pension Seeblick")
        run = self.bad(self.restore(document=document))
        self.assertNotIn("After:", run.output)
        self.assertIn("Neither before nor after: nothing of the document is in the headend", run.output)
        self.assertIn("somebody else has changed 1 item meanwhile", run.output)
        self.assertIn("identification/headendName: Hotel Atlântico -> Pension Seeblick", run.output)
        self.assertIn("The headend refused the document", run.output)
        self.assertEqual("Pension Seeblick", name_of(device))
        self.assertEqual(
            ["hotel: first backup", "hotel: 1 change in identification, after a restore"], self.subjects()
        )

    def test_a_refused_restore_is_not_taken_for_done_when_somebody_does_a_part_of_it(self) -> None:
        _, document = self.refusing(named_meanwhile="Villa Aurora")
        path = Path(document)
        path.write_text(path.read_text("utf-8").replace("<band>low<", "<band>high<", 1), "utf-8")
        run = self.bad(self.restore(document=document))
        self.assertNotIn("After:", run.output)
        self.assertIn("Neither before nor after: the headend says that the restore was not done", run.output)
        self.assertIn("1 of the 2 items that the document changes", run.output)
        self.assertRegex(run.output, r"1 item otherwise than in the document(.|\n)*/band: high -> low")

    def test_a_power_cut_and_a_change_by_somebody_is_not_taken_for_done(self) -> None:
        # Where tarvo-backup had begun to import, its undo would take the change along.
        device = self.started(with_backup=False)
        self.drop(device, then=lambda: self.headends.power_cut("hotel"))
        rename(device, "Pension Seeblick")
        again = self.good(self.restore(document=self.document))
        change = "somebody else has changed 1 item meanwhile"
        self.assertIn(change, again.output)
        first, second = again.output.split(change, 1)
        self.assertIn("Neither before nor after", first)
        self.assertIn("Run this again", second)
        self.assertIn("After: the headend is as the document says.", second)
        self.assertEqual("Villa Aurora", name_of(device))

    def test_a_refused_document_says_why_and_what_to_do(self) -> None:
        device = self.started()
        run = self.bad(self.restore(document=self.edited("<band>low<", "<band>deep<")))
        self.assertIn("diseqcs/diseqc[id=1]/band: Invalid command: Invalid value for", run.output)
        self.assertIn("Nothing was done. The plan names what the headend would refuse", run.output)
        self.assertEqual("Hotel Atlântico", name_of(device))
        self.assertEqual(["hotel: first backup"], self.subjects())

    def test_a_restore_that_the_headend_ends_says_before_and_what_to_do(self) -> None:
        device = self.started()
        device.path("/tmp/own.xml").write_bytes((self.headends.repository / "hotel.xml").read_bytes())
        held = device.run(BACKUP, ["restore", "--yes", "--confirm", "9", "/tmp/own.xml"])
        self.assertEqual(0, held.status, held.stderr)
        run = self.bad(self.restore(document=self.edited("Hotel Atlântico", "Villa Aurora")))
        self.assertIn("Before: the headend is as it was before the restore", run.output)
        self.assertIn("Another restore holds the headend", run.output)
        self.assertEqual("Hotel Atlântico", name_of(device))

    def test_what_no_restore_brings_back_is_told_item_by_item(self) -> None:
        self.started()
        document = Path(self.edited("<encrypt>0<", "<encrypt>0<"))
        document.write_text(document.read_text("utf-8").replace("<encrypt>0<", "<encrypt>1<", 1))
        run = self.good(self.restore(document=str(document)))
        self.assertIn("After: the restore was done; 1 item otherwise than in the document", run.output)
        self.assertRegex(run.output, r"/encrypt: 1 -> 0")

    def test_a_backup_afterwards_that_fails_does_not_hide_the_restore(self) -> None:
        device = self.started(with_backup=False)
        program = device.path("/tarvo/bin/tarvo-config")
        program.rename(program.with_name("real"))
        program.write_text(
            "#!/bin/sh\n"
            "[ $# -gt 0 ] || [ ! -e /tmp/restored ] || exit 3\n"
            '/tarvo/bin/real "$@" && if [ $# -gt 0 ]; then touch /tmp/restored; fi\n'
        )
        program.chmod(0o755)
        document = self.edited("Hotel Atlântico", "Villa Aurora")
        run = self.bad(self.restore(document=document))
        self.assertIn("the headend says (status 0)", run.output)
        self.assertIn("tarvo-config ended with status 3", run.output)
        self.assertIn("run the same command again: it tells whether", run.output)
        device.path("/tmp/restored").unlink()
        again = self.good(self.restore(document=document))
        self.assertIn("After: the headend is as the document says.", again.output)
        self.assertEqual("Villa Aurora", name_of(device))

    def test_a_document_is_sought_where_the_operator_stands(self) -> None:
        self.started()
        document = Path(self.edited("Hotel Atlântico", "Villa Aurora"))
        place = str(document.parent)
        run = self.good(
            self.headends.play(
                "plan", extra={"document": document.name}, under=("env", "-C", place), PWD=place
            )
        )
        self.assertIn("identification/headendName: Hotel Atlântico -> Villa Aurora", run.output)

    def drop(self, device: Device, then: Callable[[], None] = lambda: None) -> None:
        """A restore whose connection drops while the import waits for a writer. `then` is done to the
        headend at once, because the import waits for some seconds only, however busy the machine is.
        """
        self.document = self.edited("Hotel Atlântico", "Villa Aurora")
        with closing(device.database(CONFIG_DB)) as writer, ThreadPoolExecutor() as pool:
            writer.execute("BEGIN IMMEDIATE")
            self.headends.drop_at("hotel", RUNNING)
            restore = pool.submit(self.restore, document=self.document)
            while not self.headends.has_dropped("hotel") and not restore.done():
                time.sleep(0.02)
            self.assertEqual("Hotel Atlântico", name_of(device))
            then()
            writer.execute("ROLLBACK")
            run = self.bad(restore.result())
        self.assertIn("the connection was lost", run.output)
        self.assertIn("run the same command: it tells which it is", run.output)

    def check_after(self, device: Device) -> None:
        self.drop(device)
        again = self.good(self.restore(document=self.document))
        self.assertIn("its end was not seen", again.output)
        self.assertIn("After: the headend is as the document says.", again.output)
        self.assertIn("so nothing was done", again.output)
        self.assertEqual("Villa Aurora", name_of(device))
        self.assertEqual(
            ["hotel: first backup", "hotel: 1 change in identification, after a restore"],
            self.subjects(),
        )

    def test_a_dropped_connection_does_not_end_the_restore(self) -> None:
        self.check_after(self.started())

    def test_nor_does_it_without_tarvo_backup_on_the_headend(self) -> None:
        self.check_after(self.started(with_backup=False))

    def test_a_power_cut_after_the_drop_is_before_and_the_rerun_restores(self) -> None:
        device = self.started()
        self.drop(device, then=lambda: self.headends.power_cut("hotel"))
        again = self.good(self.restore(document=self.document))
        first, second = again.output.split("Before: the headend is as it was before the restore", 1)
        self.assertIn("its end was not seen", first)
        self.assertIn("After: the headend is as the document says.", second)
        self.assertEqual("Villa Aurora", name_of(device))

    def test_a_connection_that_drops_before_the_document_is_there_is_before(self) -> None:
        device = self.started()
        document = self.edited("Hotel Atlântico", "Villa Aurora")
        # The session dies as soon as there is a place for the document; the rest of it never comes.
        cat = device.path("/tarvo/bin/cat")
        place = "/tmp/tarvo-fleet/restore/document.xml"
        cat.write_text(f'#!/bin/sh\n[ ! -e {place} ] || sleep 600\nexec /bin/cat "$@"\n')
        cat.chmod(0o755)
        self.headends.drop_at("hotel", place)
        run = self.bad(self.restore(document=document))
        self.assertIn("the connection was lost", run.output)
        cat.unlink()
        again = self.good(self.restore(document=document))
        self.assertIn("the restore never began", again.output)
        self.assertIn("Before: the headend is as it was before the restore", again.output)
        self.assertIn("After: the headend is as the document says.", again.output)
        self.assertEqual("Villa Aurora", name_of(device))


if __name__ == "__main__":
    main()

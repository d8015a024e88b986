"""playbooks/backup.yml: what is kept of which headend, and what the run says."""

import contextlib
import os
import re
import socket
import stat
import subprocess
import sys
import threading
import time
import unittest
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import main
from fleet_sim import CONFIG, FLEET, Device, Headends

CONFIG_DB = "/tarvo/DB/config_global.sqlite"
STATE_DB = "/tmp/temp_global.sqlite"
FAKETIME = Path("/usr/lib") / (os.uname().machine + "-linux-gnu") / "faketime/libfaketime.so.1"


def write(device: Device, sql: str, *values: str, path: str = CONFIG_DB) -> None:
    with closing(device.database(path)) as database:
        assert database.execute(sql, values).rowcount > 0, sql


def setting(device: Device, name: str, value: str) -> None:
    write(device, "UPDATE configuracionWebGlobal SET valor = ? WHERE nombre = ?", value, name)


def rename(device: Device, name: str) -> None:
    setting(device, "identificacion_cabecera", name)


def program(device: Device, name: str, text: str) -> None:
    """A program in the place of the device's own."""
    path = device.path(f"/tarvo/bin/{name}")
    path.unlink(missing_ok=True)
    path.write_text("#!/bin/sh\n" + text)
    path.chmod(0o755)


class NightsTest(unittest.TestCase):
    maxDiff = 4000

    def headends(self) -> Headends:
        headends = Headends()
        self.addCleanup(headends.close)
        return headends

    def said(self, output: str, host: str) -> str:
        """What the run said of a host that failed."""
        [message] = re.findall(rf'fatal: \[{re.escape(host)}\]: FAILED! => .*"msg": "(.*)"', output)
        return message

    def test_nights(self) -> None:
        """Three nights of headends that do well and headends that do not."""
        headends = self.headends()
        add = headends.add
        for host in ("same", "changed", "state", "down", "stranger", "key", "fast", "lost", "slow"):
            add(host, "LMV-502")
        for host in ("behind", "gone", "password", "silent", "busy"):
            add(host, "LMV-502")
        add("secret", "RNB-K408")
        for host in ("locked", "old", "endless", "cut", "mute", "empty"):
            add(host, "LMV-502", with_backup=False)
        odd = "-e '%s'; $(touch x) ü/.."
        add(odd, "LMV-502")
        headends.start()

        first = headends.play("backup")
        self.assertEqual(0, first.status, first.output)
        hosts = list(headends.devices)
        subjects = headends.git("log", "--format=%s").splitlines()
        self.assertEqual(len(hosts), len(subjects))
        self.assertEqual({f"{host}: first backup" for host in hosts}, set(subjects))
        self.assertIn("22 headends: 22 changed, 0 unchanged, 0 failed", first.output)
        self.assertEqual("", headends.git("status", "--porcelain"))
        files = {path.name for path in headends.repository.glob("*.xml")}
        expected = {f"{host}.xml" for host in hosts if host != odd}
        quoted = "%2De%20%27%25s%27%3B%20%24%28touch%20x%29%20%C3%BC%2F...xml"
        self.assertEqual(expected | {quoted}, files)
        self.assertEqual(0o700, stat.S_IMODE(headends.repository.stat().st_mode))
        modes = {stat.S_IMODE(path.stat().st_mode) for path in headends.repository.glob("*.xml")}
        self.assertEqual({0o600}, modes)
        # With tarvo-backup and without it comes the same document.
        contents = {(headends.repository / f"{host}.xml").read_bytes() for host in ("same", "old")}
        self.assertEqual(1, len(contents))
        self.assertIn(b"</configuration>", contents.pop())

        last = headends.git("rev-parse", "HEAD")
        # Their runs have ended between the commit and the file, and somebody has been at work.
        (headends.repository / "behind.xml").write_text("from the night before")
        (headends.repository / "gone.xml").unlink()
        second = headends.play("backup")
        self.assertEqual(0, second.status, second.output)
        self.assertIn("22 headends: 0 changed, 22 unchanged, 0 failed", second.output)
        self.assertEqual(last, headends.git("rev-parse", "HEAD"))
        for host in ("behind", "gone"):
            self.assertIn(f"unchanged; {host}.xml was not as in its last commit, and is now", second.output)
        self.assertEqual("", headends.git("status", "--porcelain"))

        devices = headends.devices
        pwned = headends.folder / "pwned"
        rename(devices["changed"], f"Pension Seeblick {{{{ lookup('pipe', 'touch {pwned}') }}}} \033[2J")
        before = devices["state"].run(CONFIG).stdout
        write(devices["state"], "UPDATE TempNIMCOFDMGlobal SET Calidad = 7, CNR = 3", path=STATE_DB)
        write(devices["state"], "UPDATE TempNIMGlobal SET Calidad = 7, CNR = 3", path=STATE_DB)
        self.assertNotEqual(before, devices["state"].run(CONFIG).stdout)
        setting(devices["secret"], "servidorZEN_password", "hush-hush")
        headends.variables["down"]["ansible_host"] = "127.0.2.1"
        headends.variables["lost"]["ansible_host"] = "headend.invalid"
        headends.variables["key"]["ansible_ssh_private_key_file"] = str(headends.folder / "other_key")
        headends.variables["stranger"]["ansible_ssh_common_args"] = (
            f"-F none -o UserKnownHostsFile={headends.folder}/nobody"
        )
        headends.environment("fast", LD_PRELOAD=str(FAKETIME), FAKETIME="+400d")
        rename(devices["fast"], "Fast")
        headends.environment("slow", LD_PRELOAD=str(FAKETIME), FAKETIME="-3d")
        headends.variables["password"]["ansible_ssh_private_key_file"] = str(headends.folder / "locked_key")
        headends.stall("silent")
        headends.variables["silent"]["headend_silence"] = 3
        # One that takes its time is not silent.
        backup = devices["busy"].path("/tarvo/bin/tarvo-backup")
        backup.rename(backup.with_name("real"))
        program(devices["busy"], "tarvo-backup", '[ $# -lt 3 ] || sleep 15; exec /tarvo/bin/real "$@"\n')
        headends.variables["busy"]["headend_silence"] = 12
        for host, text in SCRIPTS.items():
            program(devices[host], "tarvo-config", text)
        program(devices["mute"], "logger", ":")
        headends.variables["endless"]["headend_document_limit"] = 300000
        # The guide's table stays locked: the export leaves it out and ends with 0.
        lock = devices["locked"].database(CONFIG_DB)
        lock.execute("BEGIN EXCLUSIVE")
        third = headends.play("backup")
        lock.close()

        self.assertEqual(2, third.status, third.output)
        self.assertIn("22 headends: 3 changed, 8 unchanged, 11 failed", third.output)
        messages = headends.git("log", "--format=%B", f"{last.strip()}..HEAD")
        self.assertEqual(
            sorted(
                (
                    "changed: 1 change in identification",
                    "identification/headendName: Hotel Atlântico -> Pension Seeblick"
                    f" {{ {{ lookup('pipe', 'touch {pwned}') }}}}  [2J",
                    "fast: 1 change in identification",
                    "identification/headendName: Hotel Atlântico -> Fast",
                    "secret: 1 change in remoteControl",
                    "remoteControl/password: changed (secret)",
                )
            ),
            sorted(line for line in messages.splitlines() if line),
        )
        self.assertNotIn("hush-hush", third.output)
        self.assertNotIn("\033", third.output)
        self.assertFalse(pwned.exists())
        places = (Path.cwd(), FLEET / "playbooks", headends.folder, headends.repository)
        self.assertEqual([], [place for place in places if (place / "x").exists()])
        self.assertIn("its clock is 400 days fast", third.output)
        self.assertIn("unchanged; its clock is 3 days slow", third.output)
        for host, why in (
            ("down", "it does not answer"),
            ("lost", "no such host: look at its line in the inventory"),
            ("key", "it does not take the key"),
            ("password", "locked_key has a password, and no agent gives it to this run"),
            ("silent", "it let the connection be and said nothing for 3 seconds"),
            ("stranger", "its host key is not known here"),
            ("locked", "tarvo-config could not read everything"),
            ("endless", "it sends more than"),
            ("cut", "the document is not whole"),
            ("mute", "its log does not show the run"),
            ("empty", "the document is empty: there is no module in it"),
        ):
            with self.subTest(host):
                self.assertIn(why, self.said(third.output, host))
                changed = headends.git("log", "--format=%s", "--", f"{host}.xml").splitlines()
                self.assertEqual([f"{host}: first backup"], changed)
        self.assertEqual("", headends.git("status", "--porcelain"))
        headends.git("fsck", "--strict")

    def test_a_full_disk_leaves_what_is_there(self) -> None:
        self.check_full_disk(is_home=False)

    def test_nor_does_one_that_ansible_works_on_itself(self) -> None:
        self.check_full_disk(is_home=True)

    def check_full_disk(self, *, is_home: bool) -> None:
        headends = self.headends()
        device = headends.add("hotel", "LMV-502")
        headends.start()
        rename(device, "One")
        place = headends.folder / "small"
        place.mkdir()
        headends.repository = place / "headends"
        # A disk of its own, of three megabytes, that is there as long as this shell is.
        inside = ("bwrap", "--dev-bind", "/", "/", "--size", "3000000", "--tmpfs", place)
        script = (
            '"$@"; echo "status $?"; cd small/headends; git log --format="commit %s"; sha256sum *.xml;'
            " head -c 9000000 /dev/zero >../full 2>/dev/null;"
            ' cd ../..; python3 -c "$RENAME"; "$@"; echo "status $?"; cd small/headends;'
            ' git log --format="commit %s"; sha256sum *.xml; rm ../full;'
            " git status --porcelain; git fsck --strict 2>&1"
        )
        change = (
            "import sqlite3; d = sqlite3.connect('{}'); d.execute(\"UPDATE configuracionWebGlobal SET"
            " valor = 'Two' WHERE nombre = 'identificacion_cabecera'\"); d.commit()"
        ).format(device.path(CONFIG_DB))
        run = headends.play(
            "backup",
            under=(*inside, "--chdir", headends.folder, "sh", "-c", script, "sh"),
            RENAME=change,
            **({"HOME": str(place)} if is_home else {}),
        )
        lines = run.output.splitlines()
        self.assertEqual(["status 0", "status 2"], [line for line in lines if "status " in line[:7]])
        self.assertEqual(2, lines.count("commit hotel: first backup"), run.output)
        sums = [line for line in lines if line.endswith("  hotel.xml")]
        self.assertEqual(2, len(sums))
        self.assertEqual(1, len(set(sums)))
        self.assertRegex(run.output, r"fatal: \[hotel.*No space left on device")
        self.assertEqual(sums[-1], lines[-1], "git status and git fsck have nothing to say")

    def test_an_inventory_that_names_nobody_is_an_error(self) -> None:
        headends = self.headends()
        for name, text in (("missing.yml", None), ("empty.yml", "all:\n"), ("broken.yml", "all: [\n")):
            with self.subTest(name):
                path = headends.folder / name
                if text is not None:
                    path.write_text(text)
                run = headends.play("backup", inventory=path)
                self.assertNotEqual(0, run.status, run.output)
                self.assertRegex(run.output, "The inventory names no host|parse")
                self.assertFalse(headends.repository.exists())
        headends.add("hotel", "LMV-502")
        misspelt = {"tarvo_hosts": "headens"}
        for name in ("backup", "plan", "restore"):
            for words, extra, why in (
                ((), misspelt, "The inventory names no host in headens, so nothing was done"),
                (("-l", "hotel", "--check"), None, "There is no check mode, so nothing was done"),
                # Which leaves no host to say so on, where there is no check of its own.
                (("-l", "hotel"), misspelt, "The inventory names no host in headens that is in -l hotel"),
                (("-l", "hotle"), None, "Could not match supplied host pattern.*hotle"),
                (("-l", "hotel,hotle"), None, "Could not match supplied host pattern.*hotle"),
            ):
                with self.subTest(name, words=words):
                    run = headends.play(name, *words, extra=extra)
                    self.assertNotEqual(0, run.status, run.output)
                    self.assertRegex(run.output, why)
        # Without ansible.cfg as well.
        nothing = headends.folder / "ansible.cfg"
        nothing.touch()
        run = headends.play(
            "restore", "-l", "hotel", inventory=headends.folder / "empty.yml", ANSIBLE_CONFIG=str(nothing)
        )
        self.assertNotEqual(0, run.status, run.output)
        self.assertIn("The inventory names no host", run.output)
        self.assertFalse(headends.repository.exists())

    def test_a_wrong_line_of_the_inventory_holds_up_no_other_headend(self) -> None:
        # The first is the one on which Ansible does what is done once for all.
        headends = self.headends()
        headends.variables["first"] = {"ansible_host": "127.0.2.1", "ansible_port": "22x"}
        headends.variables["other"] = {"ansible_host": "127.0.2.1"}
        run = headends.play("backup")
        self.assertNotEqual(0, run.status, run.output)
        self.assertIn("invalid value (22x)", self.said(run.output, "first"))
        self.assertIn("it does not answer", self.said(run.output, "other"))

    def test_a_key_with_a_password_needs_its_agent(self) -> None:
        headends = self.headends()
        headends.add("hotel", "LMV-502", ansible_ssh_private_key_file=str(headends.folder / "locked_key"))
        headends.start()
        agent = {"SSH_AUTH_SOCK": str(headends.folder / "agent")}
        process = subprocess.Popen(
            ["ssh-agent", "-D", "-a", agent["SSH_AUTH_SOCK"]], stdout=subprocess.DEVNULL
        )
        self.addCleanup(process.wait)
        self.addCleanup(process.terminate)
        while not Path(agent["SSH_AUTH_SOCK"]).exists():
            self.assertIsNone(process.poll())
            time.sleep(0.02)
        run = headends.play("backup", **agent)
        self.assertIn("locked_key has a password, and no agent gives it", self.said(run.output, "hotel"))
        answer = headends.folder / "answer"
        answer.write_text("#!/bin/sh\necho open\n")
        answer.chmod(0o700)
        subprocess.run(
            ["ssh-add", "-q", headends.folder / "locked_key"],
            env={**os.environ, **agent, "SSH_ASKPASS": str(answer), "SSH_ASKPASS_REQUIRE": "force"},
            check=True,
        )
        run = headends.play("backup", **agent)
        self.assertEqual(0, run.status, run.output)
        self.assertIn("1 headend: 1 changed, 0 unchanged, 0 failed", run.output)
        # A key that is offered and not taken is not blamed on its password.
        (headends.folder / "authorized_keys").write_text("")
        run = headends.play("backup", **agent)
        self.assertIn("it does not take the key or the user", self.said(run.output, "hotel"))

    def test_a_headend_that_takes_the_connection_and_no_more_is_given_up(self) -> None:
        headends = self.headends()
        for greeting, why in ((b"", "it does not answer"), (b"SSH-2.0-x\r\n", "said nothing for 4 seconds")):
            with self.subTest(why), socket.create_server(("127.0.0.1", 0)) as server:
                peers = []

                def greet(server: socket.socket = server, greeting: bytes = greeting) -> None:
                    with contextlib.suppress(OSError):
                        while True:
                            peers.append(server.accept()[0])
                            peers[-1].sendall(greeting)

                threading.Thread(target=greet, daemon=True).start()
                headends.variables["hotel"] = {
                    "ansible_host": "127.0.0.1",
                    "ansible_port": server.getsockname()[1],
                    "headend_connect_timeout": 2,
                    "headend_silence": 4,
                    "headend_tries": 3,
                    "headend_pause": 0,
                }
                run = headends.play("backup")
                self.assertIn(why, self.said(run.output, "hotel"))
                self.assertEqual(1, len(peers), "it is not tried again")
                peers[0].close()

    def test_the_playbooks_and_the_collection_are_what_ansible_takes(self) -> None:
        headends = self.headends()
        headends.add("hotel", "LMV-502")
        for name in ("backup", "plan", "restore"):
            run = headends.play(name, "--syntax-check")
            self.assertEqual(0, run.status, run.output)
        # And installed: the role is found there, too.
        environment = {"ANSIBLE_COLLECTIONS_PATH": str(headends.folder / "collections")}
        for words in (
            ("build", "--output-path", headends.folder),
            ("install", "-p", environment["ANSIBLE_COLLECTIONS_PATH"], headends.folder / ARCHIVE),
        ):
            subprocess.run(
                ["ansible-galaxy", "collection", *words],
                cwd=FLEET,
                env={**os.environ, **environment, "HOME": str(headends.folder)},
                check=True,
                stdout=subprocess.DEVNULL,
            )
        headends.variables["hotel"]["ansible_host"] = "127.0.2.1"
        run = headends.play("backup", playbook="tarvo.fleet.backup", **environment)
        self.assertIn("it does not answer", self.said(run.output, "hotel"))


ARCHIVE = "tarvo-fleet-1.0.0.tar.gz"

# What stands for tarvo-config on a headend that is broken or hostile.
SCRIPTS = {
    "endless": "while :; do echo '<!-- and so on and so on and so on and so on -->'; done\n",
    "cut": "echo '<configuration><modules><module><mac>02:00:00:00:00:01</mac>'\n",
    "empty": "echo '<configuration></configuration>'\n",
}


if __name__ == "__main__":
    main()

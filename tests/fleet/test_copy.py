"""The encrypted copy of the repository, with the commands of fleet/README.md."""

import getpass
import os
import re
import subprocess
import sys
import unittest
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import main
from fleet_sim import FLEET, SSHD, Headends, free_port

VAULT = "/srv/headends"


def blocks() -> list[list[str]]:
    """Of the section on secrets, the commands with the copy, block by block."""
    section = (FLEET / "README.md").read_text("utf-8").split("\n## Secrets\n")[1].split("\n## ")[0]
    found = re.findall(r"(?m)(?:^    .*\n)+", section)
    return [[line[4:] for line in block.splitlines()] for block in found if "ssh://" in block]


class CopyTest(unittest.TestCase):
    def setUp(self) -> None:
        self.headends = Headends()
        self.addCleanup(self.headends.close)
        self.vault = self.headends.folder / "vault"
        self.port = free_port()

    def start_vault(self) -> None:
        """The sshd of the headends, but for their login."""
        folder = self.headends.folder
        lines = (folder / "sshd_config").read_text().splitlines()
        lines = [line for line in lines if not line.startswith(("Port", "ForceCommand"))]
        (folder / "vault_config").write_text("\n".join(lines) + "\n")
        sshd = subprocess.Popen(
            [SSHD, "-De", "-f", folder / "vault_config", f"-oListenAddress=127.0.0.1:{self.port}"],
            stdin=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        self.addCleanup(sshd.wait)
        self.addCleanup(sshd.terminate)
        self.headends.wait_for("127.0.0.1", self.port)

    def sh(self, home: Path, lines: list[str]) -> subprocess.CompletedProcess[str]:
        folder = self.headends.folder
        ssh = (
            f"ssh -F none -l {getpass.getuser()} -i {folder}/key -p {self.port}"
            " -o HostName=127.0.0.1 -o StrictHostKeyChecking=no -o LogLevel=ERROR"
            f" -o UserKnownHostsFile={folder}/vault_hosts"
        )
        environment = {"PATH": os.environ["PATH"], "HOME": str(home), "GIT_SSH_COMMAND": ssh}
        self.addCleanup(subprocess.run, ["gpgconf", "--kill", "all"], env=environment, check=True)
        text = "\n".join(
            line.replace(VAULT, str(self.vault))
            for line in lines
            if not line.startswith(("apt-get", "adduser", "chown"))
        )
        return subprocess.run(
            ["sh", "-ec", text], env=environment, cwd=home, capture_output=True, text=True, check=False
        )

    def test_the_copy_holds_no_name_and_gives_everything_back(self) -> None:
        device = self.headends.add("hotel", "LMV-502")
        self.headends.start()
        self.start_vault()
        home = self.headends.folder
        self.assertEqual(0, self.headends.play("backup").status)
        first, back = blocks()
        result = self.sh(home, first)
        self.assertEqual(0, result.returncode, result.stderr)
        with closing(device.database("/tarvo/DB/config_global.sqlite")) as database:
            database.execute(
                "UPDATE configuracionWebGlobal SET valor = 'Villa Aurora'"
                " WHERE nombre = 'identificacion_cabecera'"
            )
        self.assertEqual(0, self.headends.play("backup").status)
        result = self.sh(home, ["cd ~/headends", first[-1]])
        self.assertEqual(0, result.returncode, result.stderr)

        kept = subprocess.run(
            ["git", "--git-dir", self.vault, "log", "--all", "-p", "--text"], capture_output=True, check=True
        ).stdout
        self.assertGreater(len(kept), 1000)
        for name in (b"hotel", b"Villa", b"headend"):
            self.assertNotIn(name, kept)

        # Another machine, which has the exported key and nothing else; and one that has not.
        other, stranger = home / "other", home / "stranger"
        for place in (other, stranger):
            place.mkdir(mode=0o700)
        (home / "headends.asc").rename(other / "headends.asc")
        result = self.sh(other, back)
        self.assertEqual(0, result.returncode, result.stderr)
        result = subprocess.run(
            ["git", "-C", other / self.vault.name, "rev-parse", "HEAD"], capture_output=True, text=True, check=True
        )
        self.assertEqual(self.headends.git("rev-parse", "HEAD"), result.stdout)
        self.assertNotEqual(0, self.sh(stranger, [line for line in back if "import" not in line]).returncode)


if __name__ == "__main__":
    main()

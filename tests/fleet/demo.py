"""Three simulated headends, two nights, a change, a restore, and the log that tells it."""

import contextlib
import sys
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

from fleet_sim import Headends, Run

CONFIG_DB = "/tarvo/DB/config_global.sqlite"
HEADENDS = {"hotel-mirador": "QRA-310", "hotel-atlantico": "LMV-502", "campus-maas": "WVX-BQ4"}


def heading(text: str) -> None:
    print(f"\n{text}\n")


def show(run: Run) -> None:
    """What the run printed, without Ansible's own headings."""
    for line in run.output.splitlines():
        if line.strip() and not line.startswith(("PLAY", "TASK", "localhost", "NO MORE")):
            print(f"    {line}")
    if run.status:
        print(f"    (status {run.status})")


def change(headends: Headends, host: str, sql: str) -> None:
    with closing(headends.devices[host].database(CONFIG_DB)) as database:
        database.executescript(sql)


def main() -> None:
    with Headends() as headends:
        for host, model in HEADENDS.items():
            headends.add(host, model)
        headends.start()

        heading("1. The first night: ansible-playbook -i hosts.yml fleet/playbooks/backup.yml")
        show(headends.play("backup"))

        heading("2. Somebody gives hotel-mirador another name, and a service another channel number")
        change(
            headends,
            "hotel-mirador",
            "UPDATE configuracionWebGlobal SET valor = 'Hotel Mirador Plaza'"
            " WHERE nombre = 'identificacion_cabecera';"
            "UPDATE ServiciosSalidaGlobal SET LCN = 99 WHERE LCN = 805;",
        )
        print("The second night:\n")
        show(headends.play("backup"))

        heading("3. Back to the first night: restore.yml -l hotel-mirador -e commit=COMMIT")
        first = headends.git("log", "--reverse", "--format=%h", "--", "hotel-mirador.xml").split()[0]
        extra = {"commit": first, "confirmed": True}
        show(headends.play("restore", "-l", "hotel-mirador", extra=extra))

        heading("4. What the repository tells: git log --stat")
        for line in headends.git("log", "--stat", "--format=%n%h %an: %B").splitlines():
            print(f"    {line}")


if __name__ == "__main__":
    with contextlib.suppress(KeyboardInterrupt):
        main()

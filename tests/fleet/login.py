"""The login of the simulated headends: sshd's forced command runs this as `login.py FOLDER`.

The address that was called says which device it is. Its command runs in sim/run, which is a session
of its own and stays until the last process in the device has ended: as on a real device, what a
session leaves in the background outlives it. A file `drop` beside the device holds a path of the
device: as soon as that is there, the session's command is killed and the connection drops. With a file
`stall` beside it nothing runs and nothing is said, for as long as that is there.
"""

from __future__ import annotations

import contextlib
import json
import os
import select
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path
from typing import BinaryIO

SIM_RUN = Path(__file__).resolve().parents[2] / "sim/run"

# Runs "$1", tells the pipe "$2" how it ended, and waits for what it left behind: process 1 is
# bubblewrap. It stays although nobody reads any more what it says, of the command's death, too. When
# there is a path "$3", the command dies as soon as that is there.
SHELL = """
exec 3<&0
setsid sh -c "$1" <&3 3<&- &
command=$!
exec 3<&-
trap '' PIPE
if [ -n "$3" ]; then
    while kill -0 "$command" 2>/dev/null && [ ! -e "$3" ]; do sleep 0.02; done
    [ -e "$3" ] && kill -9 "-$command" 2>/dev/null && echo dropped >"$2"
fi
wait "$command"
status=$?
exec </dev/null >/dev/null 2>&1
echo "$status" >"$2"
while set -- /proc/[0-9]* && [ $# -gt 2 ]; do sleep 0.1; done
"""


def main() -> int:
    folder = Path(sys.argv[1]) / os.environ["SSH_CONNECTION"].split()[2]
    variables = json.loads((folder / "environment.json").read_text())
    while (folder / "stall").exists():
        time.sleep(0.1)
    drop = folder / "drop"
    session = f"/tarvo/sim/session-{os.getpid()}-{time.monotonic_ns()}"
    pipe = folder / "device" / session.lstrip("/")
    os.mkfifo(pipe)
    # Opened for both, so that it neither waits for the other side nor ends with it.
    ended = os.open(pipe, os.O_RDWR)
    device = subprocess.Popen(
        [
            *(SIM_RUN, "--root", folder / "device"),
            *(f"--setenv={name}={value}" for name, value in variables.items()),
            *("--", "sh", "-c", SHELL, "login", os.environ.get("SSH_ORIGINAL_COMMAND", "")),
            *(session, drop.read_text() if drop.exists() else ""),
        ],
        stdin=subprocess.PIPE,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        start_new_session=True,
    )
    threading.Thread(target=_copy_input, args=(device.stdin,), daemon=True).start()
    outputs = {device.stdout.fileno(): 1, device.stderr.fileno(): 2}
    told = b""
    while True:
        # What was printed before the end is in the pipes when the end is told.
        waiting = None if not told and outputs else 0
        ready, _, _ = select.select([*outputs, *([] if told else [ended])], [], [], waiting)
        for handle in ready:
            if handle == ended:
                told = os.read(ended, 16)
            elif part := os.read(handle, 1 << 16):
                _write(outputs[handle], part)
            else:
                del outputs[handle]
        if not ready:
            break
    pipe.unlink(missing_ok=True)
    if told.startswith(b"dropped"):
        drop.unlink()
        os.kill(os.getppid(), signal.SIGKILL)
    return int(told) if told.strip().isdigit() else 255


def _copy_input(to: BinaryIO) -> None:
    with contextlib.suppress(BrokenPipeError), to:
        while part := os.read(0, 1 << 16):
            to.write(part)
            to.flush()


def _write(handle: int, part: bytes) -> None:
    while part:
        part = part[os.write(handle, part) :]


if __name__ == "__main__":
    sys.exit(main())
